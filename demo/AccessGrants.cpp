#include "demo/AccessGrants.h"

#include <httplib.h>

#include "demo/TicketSealer.h"

namespace demo {

namespace {

std::string randomName() {
  const TicketSealer::Key bytes = TicketSealer::randomKey();
  return encodeBase64(std::string(bytes.begin(), bytes.begin() + 15));
}

}  // namespace

AccessGrants::Grant AccessGrants::issue(const std::string& film, Clock::duration lifetime) {
  const Grant grant{randomName(), randomName()};
  const auto header = httplib::make_basic_authentication_header(grant.username, grant.password);
  const std::lock_guard<std::mutex> lock(mutex_);
  entries_[header.second] = {film, Clock::now() + lifetime};
  return grant;
}

bool AccessGrants::opens(const std::string& authorization, const std::string& film) const {
  const std::lock_guard<std::mutex> lock(mutex_);
  const auto found = entries_.find(authorization);
  return found != entries_.end() && found->second.film == film &&
         Clock::now() < found->second.until;
}

void AccessGrants::revokeAll() {
  const std::lock_guard<std::mutex> lock(mutex_);
  entries_.clear();
}

}  // namespace demo
