#include "kvsc/SocketBio.h"

#include <poll.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstring>
#include <new>

#include "kvsc/OpenSsl.h"
#include "kvsc/UniqueFd.h"

namespace kvsc {
namespace {

struct Socket {
  UniqueFd fd;
  Waiter waiter;
  bool atEnd = false;
  int sent = 0;  // by the last write
};

Socket& socketOf(BIO* bio) { return *static_cast<Socket*>(BIO_get_data(bio)); }

bool wouldBlock(int error) { return error == EAGAIN || error == EWOULDBLOCK; }

int fail(int error, const char* what) {
  raiseSystemError(error, what);
  return -1;
}

// Whether the call that ended with `error` is to be made once more.
bool awaitMore(Socket& socket, int error, short events) {
  if (error == EINTR) return true;
  return wouldBlock(error) &&
         socket.waiter.waitFor(socket.fd.get(), events) == Waiter::Outcome::kReady;
}

int failCall(const Socket& socket, int error, const char* what) {
  return fail(wouldBlock(error) ? socket.waiter.error() : error, what);
}

int readSocket(BIO* bio, char* data, int size) {
  Socket& socket = socketOf(bio);
  BIO_clear_retry_flags(bio);
  // A peer that always has one more byte never causes a wait, so the limits are checked here too.
  if (socket.waiter.mayGoOn(Waiter::Clock::now()) != Waiter::Outcome::kReady) {
    return fail(socket.waiter.error(), "reading");
  }
  if (data == nullptr || size <= 0) return 0;
  for (;;) {
    const ssize_t count = ::recv(socket.fd.get(), data, static_cast<std::size_t>(size), 0);
    socket.atEnd = count == 0;
    if (count >= 0) return static_cast<int>(count);
    const int error = errno;
    if (!awaitMore(socket, error, POLLIN)) return failCall(socket, error, "reading");
  }
}

int writeSocket(BIO* bio, const char* data, int size) {
  Socket& socket = socketOf(bio);
  BIO_clear_retry_flags(bio);
  socket.sent = 0;
  while (socket.sent < size) {
    const auto left = static_cast<std::size_t>(size - socket.sent);
    const ssize_t count = ::send(socket.fd.get(), data + socket.sent, left, MSG_NOSIGNAL);
    if (count >= 0) {
      socket.sent += static_cast<int>(count);
      continue;
    }
    const int error = errno;
    if (!awaitMore(socket, error, POLLOUT)) return failCall(socket, error, "writing");
  }
  return socket.sent;
}

int putText(BIO* bio, const char* text) {
  return writeSocket(bio, text, static_cast<int>(std::strlen(text)));
}

long controlSocket(BIO* bio, int command, long, void* target) {
  switch (command) {
    case BIO_C_GET_FD:
      if (target != nullptr) *static_cast<int*>(target) = socketOf(bio).fd.get();
      return socketOf(bio).fd.get();
    case BIO_CTRL_EOF:
      return socketOf(bio).atEnd ? 1 : 0;
    case BIO_CTRL_GET_CLOSE:
    case BIO_CTRL_FLUSH:
      return 1;
    default:
      return 0;
  }
}

int destroySocket(BIO* bio) {
  delete static_cast<Socket*>(BIO_get_data(bio));
  BIO_set_data(bio, nullptr);
  return 1;
}

struct Kind {
  int type = 0;
  BIO_METHOD* method = nullptr;  // null when the library has no type or memory to give
};

Kind makeKind() {
  const int index = BIO_get_new_index();
  if (index < 0) return Kind();
  const int type = index | BIO_TYPE_SOURCE_SINK | BIO_TYPE_DESCRIPTOR;
  BIO_METHOD* method = BIO_meth_new(type, "kvsc socket");
  if (method == nullptr) return Kind();
  BIO_meth_set_read(method, readSocket);
  BIO_meth_set_write(method, writeSocket);
  BIO_meth_set_puts(method, putText);
  BIO_meth_set_ctrl(method, controlSocket);
  BIO_meth_set_destroy(method, destroySocket);
  return Kind{type, method};
}

// Never freed: a process has one, and code that runs at its end may come after the library's end.
const Kind& socketKind() {
  static const Kind kind = makeKind();
  return kind;
}

// The socket in a chain of BIOs, null if absent.
Socket* socketIn(BIO* bio) {
  const int type = socketKind().type;
  BIO* socket = bio != nullptr && type != 0 ? BIO_find_type(bio, type) : nullptr;
  return socket != nullptr ? &socketOf(socket) : nullptr;
}

}  // namespace

BioPtr newSocketBio(int fd, const Waiter& waiter) {
  UniqueFd owned(fd);
  BIO_METHOD* method = socketKind().method;
  BioPtr bio(method != nullptr ? BIO_new(method) : nullptr);
  if (!bio) return nullptr;
  BIO_set_data(bio.get(), new Socket{std::move(owned), waiter});
  BIO_set_init(bio.get(), 1);
  return bio;
}

Waiter* waiterOf(BIO* bio) {
  Socket* socket = socketIn(bio);
  return socket != nullptr ? &socket->waiter : nullptr;
}

int bytesSentBy(BIO* bio) {
  const Socket* socket = socketIn(bio);
  return socket != nullptr ? socket->sent : 0;
}

}  // namespace kvsc
