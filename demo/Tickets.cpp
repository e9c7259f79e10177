#include "demo/Tickets.h"

#include <fstream>
#include <stdexcept>

#include "demo/ServicesServer.h"

namespace demo {

namespace {

void write(const std::string& path, const std::string& content) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file << content;
  file.close();
  if (!file) throw std::runtime_error("cannot write " + path);
}

std::string clearTicket(const std::string& mediaAddress) {
  return "TixVeskVersion=1.0\n"
         "\n"
         "start\n"
         "  title = Clock\n"
         "  contentProvider = The demo\n"
         "  url = " +
         mediaAddress +
         "/media/clock.mkv\n"
         "end\n"
         "\n"
         "start\n"
         "  url = " +
         mediaAddress +
         "/media/zoom.avi\n"
         "end\n";
}

}  // namespace

void writeTickets(const std::string& folder, const std::string& mediaAddress,
                  const ServicesServer& services, const std::vector<std::string>& protectedFilms) {
  write(folder + "/two-films.tix", clearTicket(mediaAddress));
  for (const std::string& name : protectedFilms) {
    const std::string base = name.substr(0, name.rfind('.'));
    write(folder + "/" + base + ".tix", services.sealedTicket({name}));
  }
}

}  // namespace demo
