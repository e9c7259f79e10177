#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "playerx/transfers/PartFinder.h"
#include "playerx/transfers/Placement.h"
#include "tests/support/TempDir.h"
#include "tests/unit/transfers/FilmServer.h"

namespace playerx::transfers {

/// Folders with partials of a film of 1000 bytes.
class PartialFixture : public ::testing::Test {
 protected:
  static constexpr std::size_t kFilmSize = 1000;

  DownloadRequest request(const std::string& name = "film.avi",
                          const std::string& url = "http://h/film.avi") const {
    DownloadRequest request;
    request.address = *parseAddress(url);
    request.name = name;
    request.movies = folder_ / "movies";
    request.downloads = folder_ / "parts";
    return request;
  }
  /// Another authorisation of a rights-managed film.
  DownloadRequest managed(const std::string& token, const std::string& name = "film.avi") const {
    DownloadRequest managed = request(name, "http://h/film.avi?token=" + token);
    managed.rightsManaged = true;
    return managed;
  }
  /// A partial that holds the first bytes of the film; as if it had taken long.
  static std::unique_ptr<Part> partOf(const DownloadRequest& request, std::size_t bytes) {
    std::unique_ptr<Part> part = freshPartOf(request, bytes);
    EXPECT_EQ(part->save(), 0);
    return part;
  }
  /// The same as if it had come in a moment.
  static std::unique_ptr<Part> freshPartOf(const DownloadRequest& request, std::size_t bytes) {
    std::unique_ptr<Part> part = openPart(request).part;
    EXPECT_EQ(part->beginVersion({"\"a\"", "", false}, kFilmSize), 0);
    const std::string content = filmBytes(kFilmSize).substr(0, bytes);
    EXPECT_EQ(part->file().append(content.data(), content.size()), 0);
    EXPECT_EQ(part->file().flush(), 0);
    return part;
  }
  std::filesystem::path stateFile() const {
    for (const auto& entry : std::filesystem::directory_iterator(folder_ / "parts")) {
      if (entry.path().extension() == ".json") return entry.path();
    }
    return {};
  }
  void changeState(const std::function<void(PartState&)>& change) const {
    PartState state = *loadState(stateFile());
    change(state);
    ASSERT_EQ(storeState(stateFile(), state), 0);
  }
  Placed place(Part& part, const DownloadRequest& request) const {
    return placePart(part, request, "", isCancelled_, Waiting::kAllowed);
  }
  Placed placeAgain(const std::filesystem::path& film, const DownloadRequest& request) const {
    return placeFilmAgain(film, request, isCancelled_, Waiting::kAllowed);
  }
  bool hasNoPartials() const { return std::filesystem::is_empty(folder_ / "parts"); }
  std::filesystem::path movie(const std::string& name) const { return folder_ / "movies" / name; }

  support::TempDir folder_;
  std::atomic<bool> isCancelled_{false};
};

}  // namespace playerx::transfers
