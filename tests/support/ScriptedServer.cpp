#include "tests/support/ScriptedServer.h"

#include <poll.h>
#include <signal.h>
#include <sys/socket.h>

#include <atomic>
#include <stdexcept>
#include <thread>
#include <utility>

namespace support {
namespace {

// A peer that has gone must not end the test program; the signal is the writing thread's own.
void blockBrokenPipe() {
  sigset_t set;
  sigemptyset(&set);
  sigaddset(&set, SIGPIPE);
  pthread_sigmask(SIG_BLOCK, &set, nullptr);
}

std::string targetOf(const std::string& request) {
  const std::size_t first = request.find(' ');
  const std::size_t second = request.find_first_of(" \r", first + 1);
  if (first == std::string::npos || second == std::string::npos) return {};
  return request.substr(first + 1, second - first - 1);
}

}  // namespace

struct ScriptedServer::Worker {
  std::atomic<bool> finished{false};
  std::thread thread;
};

ScriptedServer::ScriptedServer() { start(); }

ScriptedServer::ScriptedServer(const TlsSettings& settings, Tls tlsStart)
    : context_(makeServerContext(settings)), tlsStart_(tlsStart) {
  start();
}

ScriptedServer::~ScriptedServer() { stop(); }

void ScriptedServer::start() {
  if (context_) Connection::watchServerNames(context_.get());
  listener_ = listenOnLoopback();
  port_ = localPort(listener_.get());
  acceptor_ = std::make_unique<Worker>();
  acceptor_->thread = std::thread([this] { acceptLoop(); });
}

void ScriptedServer::stop() {
  if (!acceptor_) return;
  stopping_.open();
  acceptor_->thread.join();
  for (const auto& worker : workers_) worker->thread.join();
  workers_.clear();
  acceptor_.reset();
  listener_ = UniqueFd();
}

std::string ScriptedServer::url(const std::string& path, const std::string& host) const {
  const bool secure = context_ && tlsStart_ == Tls::kAtOnce;
  return loopbackUrl(secure ? "https" : "http", host, port_, path);
}

ScriptedServer& ScriptedServer::next(Script script) {
  const std::lock_guard lock(mutex_);
  scripts_.push_back(std::move(script));
  return *this;
}

ScriptedServer& ScriptedServer::always(Script script) {
  const std::lock_guard lock(mutex_);
  always_ = std::move(script);
  return *this;
}

ScriptedServer& ScriptedServer::onPath(const std::string& path, Script script) {
  const std::lock_guard lock(mutex_);
  paths_[path] = std::move(script);
  return *this;
}

ScriptedServer& ScriptedServer::onRequest(Handler handler) {
  const std::lock_guard lock(mutex_);
  handler_ = std::move(handler);
  return *this;
}

std::size_t ScriptedServer::connectionCount() const {
  const std::lock_guard lock(mutex_);
  return records_.size();
}

ConnectionRecord ScriptedServer::connection(std::size_t index) const {
  const std::lock_guard lock(mutex_);
  return records_.at(index);
}

ConnectionRecord ScriptedServer::ended(std::size_t index) const {
  const auto isOver = [&] {
    const std::lock_guard lock(mutex_);
    return index < records_.size() && records_[index].ended;
  };
  if (!waitFor(isOver)) throw std::runtime_error("the connection has not ended");
  return connection(index);
}

std::vector<std::string> ScriptedServer::requests() const {
  const std::lock_guard lock(mutex_);
  std::vector<std::string> all;
  for (const ConnectionRecord& record : records_) all.push_back(record.received);
  return all;
}

void ScriptedServer::acceptLoop() {
  blockBrokenPipe();
  for (;;) {
    pollfd watched[] = {{listener_.get(), POLLIN, 0}, {stopping_.fd(), POLLIN, 0}};
    ::poll(watched, 2, -1);
    if (watched[1].revents != 0) return;
    UniqueFd fd(::accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC));
    if (!fd) continue;
    reapFinished();
    workers_.push_back(std::make_unique<Worker>());
    Worker& worker = *workers_.back();
    worker.thread = std::thread([this, &worker, visit = admit(), fd = std::move(fd)]() mutable {
      serve(visit, std::move(fd));
      worker.finished = true;
    });
  }
}

// Done by the accepting thread, so that records and scripts keep the order of the connections.
ScriptedServer::Visit ScriptedServer::admit() {
  const std::lock_guard lock(mutex_);
  Visit visit{records_.size(), std::nullopt};
  records_.emplace_back();
  if (scripts_.empty()) return visit;
  visit.script = std::move(scripts_.front());
  scripts_.pop_front();
  return visit;
}

void ScriptedServer::reapFinished() {
  std::erase_if(workers_, [](const std::unique_ptr<Worker>& worker) {
    if (!worker->finished) return false;
    worker->thread.join();
    return true;
  });
}

void ScriptedServer::serve(const Visit& visit, UniqueFd fd) {
  blockBrokenPipe();
  const auto update = [&](const std::function<void(ConnectionRecord&)>& change) {
    const std::lock_guard lock(mutex_);
    change(records_[visit.index]);
  };
  try {
    Connection connection(std::move(fd), stopping_.fd(), context_, update);
    converse(connection, visit);
  } catch (const PeerGone&) {
    update([](ConnectionRecord& record) { record.lost = true; });
  } catch (const ServerStopped&) {
    // The connection is closed as it stands.
  }
  update([](ConnectionRecord& record) { record.ended = true; });
}

void ScriptedServer::converse(Connection& connection, const Visit& visit) {
  if (context_ && tlsStart_ == Tls::kAtOnce) connection.startTls();
  const std::optional<Script> script = visit.script ? visit.script : scriptFor(connection);
  if (script) script->play(connection);
}

std::optional<Script> ScriptedServer::scriptFor(Connection& connection) {
  std::unique_lock lock(mutex_);
  if (paths_.empty() && !handler_) return always_;
  lock.unlock();
  const std::string request = connection.readRequest();
  lock.lock();
  if (const auto found = paths_.find(targetOf(request)); found != paths_.end())
    return found->second;
  const Handler handler = handler_;
  if (!handler) return always_;
  lock.unlock();
  return handler(request);
}

}  // namespace support
