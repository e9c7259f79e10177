#pragma once

#include <string>
#include <vector>

namespace bench {

/// Milliseconds that `pause()` of the download manager takes in mid-transfer, `rounds` times: `url`
/// is added, and each time resumed until bytes arrive. `plugins` is the folder of the plug-ins,
/// `home` an empty folder for queue and films.
std::vector<double> pauseLatencies(const std::string& plugins, const std::string& home,
                                   const std::string& url, int rounds);

}  // namespace bench
