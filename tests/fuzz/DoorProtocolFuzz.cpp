// Input: a line that comes through the socket of a player that holds a queue.
#include "playerx/app/door/Protocol.h"
#include "tests/fuzz/Fuzz.h"

namespace {

template <class Message, class Read>
void checkMessage(const std::optional<Message>& message, Read read) {
  if (!message) return;
  const QByteArray line = playerx::door::write(*message);
  fuzz::require(!line.contains('\n'), "a message is one line");
  fuzz::require(read(line) == message, "a message keeps");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace playerx::door;
  const QByteArray line(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
  checkMessage(readGreeting(line), readGreeting);
  checkMessage(readRequest(line), [](const QByteArray& each) { return readRequest(each); });
  const std::optional<Answer> answer = readAnswer(line);
  if (!answer) return 0;
  const QByteArray written = std::visit([](const auto& one) { return write(one); }, *answer);
  fuzz::require(!written.contains('\n'), "an answer is one line");
  fuzz::require(readAnswer(written) == answer, "an answer keeps");
  return 0;
}
