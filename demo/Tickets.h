#pragma once

#include <string>
#include <vector>

namespace demo {

class ServicesServer;

/// Writes the demo's ticket files into `folder`: "two-films.tix", a clear ticket for two films of
/// the media server at `mediaAddress`, and "<film>.tix", a sealed one, for each of
/// `protectedFilms`. Throws std::runtime_error when a file cannot be written.
void writeTickets(const std::string& folder, const std::string& mediaAddress,
                  const ServicesServer& services, const std::vector<std::string>& protectedFilms);

}  // namespace demo
