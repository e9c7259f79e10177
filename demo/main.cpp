#include <httplib.h>

#include <CLI/CLI.hpp>
#include <iostream>
#include <nlohmann/json.hpp>
#include <thread>

#include "demo/MediaServer.h"

namespace {

/// Serves until standard input ends, so that the server goes when whoever started it does.
void serveUntilInputEnds(httplib::Server& server) {
  std::thread serving([&server] { server.listen_after_bind(); });
  std::string line;
  while (std::getline(std::cin, line)) {
  }
  server.stop();
  serving.join();
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app("Serves the demo's films on the loopback interface.", "demo-server");
  std::string media;
  app.add_option("--media", media, "Folder of the films")
      ->required()
      ->check(CLI::ExistingDirectory);
  CLI11_PARSE(app, argc, argv);

  httplib::Server server;
  demo::serveMedia(server, media,
                   [](const httplib::Request&, const std::string&) { return false; });
  const int port = server.bind_to_any_port("127.0.0.1");
  if (port < 0) {
    std::cerr << "demo-server: no free port on 127.0.0.1\n";
    return 1;
  }
  std::cout << nlohmann::json{{"port", port}}.dump() << std::endl;
  serveUntilInputEnds(server);
  return 0;
}
