#pragma once

namespace VeskPlayerX {
class DownloadManagerInterface;
}

namespace playerx::cli {

class Reporter;
struct Options;

/// Carries out one of the commands that look at or edit the queue without downloading: list,
/// remove, retry, move, clear. The module's scheduler must be held back. Returns the program's exit
/// status; problems go to `reporter`.
int runQueueCommand(const Options& options, VeskPlayerX::DownloadManagerInterface& manager,
                    Reporter& reporter);

}  // namespace playerx::cli
