// Input: what the online services answer, to each of the questions.
#include "playerx/services/ServicesProtocol.h"
#include "tests/fuzz/Fuzz.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace playerx;
  const std::string json = fuzz::textOf(data, size);
  const auto records = readTicketAnswer(json).value_or(TicketRecords{});
  fuzz::require(records.size() <= kMaxRecords, "a ticket holds so many films");
  for (const auto& record : records) {
    fuzz::require(record != nullptr, "all of a ticket or nothing");
    fuzz::require(!record->ticket.empty() && record->ticket.size() <= kMaxTicketText, "a ticket");
    fuzz::require(!record->title.empty() && record->title.size() <= kMaxName, "a title");
  }
  VeskDrmDownloadAuthorization answer;
  answer.url = "of another answer";
  authorizeAnswer(json, answer);
  fuzz::require(answer.url.empty() == !answer.success, "an address comes with a success alone");
  fuzz::require(answer.url.size() <= kMaxAddress, "an address");
  fuzz::require(answer.strdChunkBase64.size() <= kMaxRights, "rights");
  readyAnswer(json);
  return 0;
}
