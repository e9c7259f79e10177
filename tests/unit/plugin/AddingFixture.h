#pragma once

#include <string>
#include <vector>

#include "tests/unit/plugin/ManagerFixture.h"

/// Additions to a queue whose scheduler sleeps.
class AddingFixture : public ManagerFixture {
 protected:
  using Lines = std::vector<std::string>;

  void begin(const std::string& queue, const Change& change = {}) {
    startAsleep(queue, change);
    forgetFile();
    log_.clear();
  }

  Item* addFilm(const std::wstring& title) {
    return manager().add(L"http://films.example/" + title + L".avi", title, L"");
  }

  /// A clear ticket's file.
  std::wstring clearTicket(const std::string& blocks) const {
    return folder_.write("clear.tix", "TixVeskVersion=1.0\n" + blocks).wstring();
  }
};
