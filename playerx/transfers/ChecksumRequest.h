#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "playerx/transfers/Fetch.h"
#include "playerx/transfers/FetchLoop.h"

namespace playerx::transfers {

/// Asks for the checksum file of a film. On the engine's thread; breaks off when it is destroyed.
class ChecksumRequest : private FetchSink {
 public:
  /// Either the sum, or what went wrong.
  using Then =
      std::function<void(const std::optional<std::string>& sum, const std::string& problem)>;

  /// `spec` asks for the checksum file, `film` is the name of the film in it. The loop outlives the
  /// request. `then` is called once, within the loop, and may destroy it.
  ChecksumRequest(const FetchSpec& spec, std::string film, FetchLoop& loop, Then then);
  ChecksumRequest(const ChecksumRequest&) = delete;
  ChecksumRequest& operator=(const ChecksumRequest&) = delete;
  ~ChecksumRequest() override;

 private:
  bool onHeaderLine(std::string_view) override { return true; }
  bool onBody(const char* data, std::size_t length) override;
  void onOver(const FetchOutcome& outcome) override;

  const std::string film_;
  FetchLoop& loop_;
  const Then then_;
  std::string content_;
  std::unique_ptr<Fetch> fetch_;
};

}  // namespace playerx::transfers
