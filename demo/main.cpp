#include <httplib.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <thread>

#include "demo/MediaServer.h"
#include "demo/ServicesServer.h"
#include "demo/Tickets.h"

namespace {

namespace fs = std::filesystem;

struct Options {
  std::string media;
  std::string tickets;
  std::string ticketKey;
  std::string certificate;
  std::string privateKey;
  std::string host = "127.0.0.1";
  int port = 0;
  std::uint64_t rate = 0;
  bool stay = false;
  std::vector<std::string> protectedFilms;
};

void addOptions(CLI::App& app, Options& options) {
  app.add_option("--media", options.media, "Folder of the films")
      ->required()
      ->check(CLI::ExistingDirectory);
  app.add_option("--protect", options.protectedFilms, "Films of that folder that need a ticket");
  app.add_option("--tickets", options.tickets, "Folder to write ticket files into")
      ->check(CLI::ExistingDirectory);
  app.add_option("--ticket-key", options.ticketKey,
                 "File that keeps the key of sealed tickets; made when missing");
  app.add_option("--port", options.port, "Port; any free one unless told");
  app.add_option("--host", options.host, "Loopback address or name to listen at");
  app.add_option("--rate", options.rate,
                 "Bytes per second of each film; as fast as can be unless told");
  app.add_flag("--stay", options.stay,
               "Serve until a signal ends the program, not until standard input ends");
  auto* certificate =
      app.add_option("--certificate", options.certificate, "PEM file: serve over TLS")
          ->check(CLI::ExistingFile);
  app.add_option("--private-key", options.privateKey, "PEM file of the certificate's key")
      ->check(CLI::ExistingFile)
      ->needs(certificate);
}

std::unique_ptr<httplib::Server> makeServer(const Options& options) {
  if (options.certificate.empty()) return std::make_unique<httplib::Server>();
  return std::make_unique<httplib::SSLServer>(options.certificate.c_str(),
                                              options.privateKey.c_str());
}

/// The key of sealed tickets: the one in the file, or a new one that is kept there.
demo::TicketSealer::Key ticketKey(const std::string& path) {
  demo::TicketSealer::Key key = demo::TicketSealer::randomKey();
  if (path.empty()) return key;
  std::ifstream kept(path, std::ios::binary);
  if (kept.read(reinterpret_cast<char*>(key.data()), key.size())) return key;
  key = demo::TicketSealer::randomKey();
  std::ofstream(path, std::ios::binary)
      .write(reinterpret_cast<const char*>(key.data()), key.size());
  return key;
}

std::vector<demo::ProtectedFilm> protectedFilms(const Options& options) {
  std::vector<demo::ProtectedFilm> films;
  std::int32_t number = 0;
  for (const std::string& name : options.protectedFilms) {
    ++number;
    films.push_back({name, fs::path(name).stem(), "The demo's services", 7000 + number,
                     500 + number, fs::file_size(fs::path(options.media) / name)});
  }
  return films;
}

/// Serves until standard input ends, so that the server ends with the program that started it.
void serveUntilInputEnds(httplib::Server& server) {
  std::thread serving([&server] { server.listen_after_bind(); });
  std::string line;
  while (std::getline(std::cin, line)) {
  }
  server.stop();
  serving.join();
}

int run(const Options& options) {
  const std::unique_ptr<httplib::Server> server = makeServer(options);
  server->set_tcp_nodelay(true);
  int port = options.port;
  if (port == 0) {
    port = server->bind_to_any_port(options.host);
  } else if (!server->bind_to_port(options.host, port)) {
    port = -1;
  }
  if (port <= 0) throw std::runtime_error("cannot listen at " + options.host);

  const std::string scheme = options.certificate.empty() ? "http" : "https";
  const std::string address = scheme + "://" + options.host + ":" + std::to_string(port);
  demo::ServicesServer services(ticketKey(options.ticketKey), address, protectedFilms(options));
  services.serve(*server);
  demo::serveMedia(*server, {options.media, options.rate},
                   [&services](const httplib::Request& request, const std::string& film) {
                     return services.grants().opens(request.get_header_value("Authorization"),
                                                    film);
                   });
  if (!options.tickets.empty()) {
    demo::writeTickets(options.tickets, address, services, options.protectedFilms);
  }
  std::cout << nlohmann::json{{"address", address}, {"port", port}}.dump() << std::endl;
  if (options.stay) {
    server->listen_after_bind();
  } else {
    serveUntilInputEnds(*server);
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app("Films and online services on the loopback interface.", "demo-server");
  Options options;
  addOptions(app, options);
  CLI11_PARSE(app, argc, argv);
  try {
    return run(options);
  } catch (const std::exception& error) {
    std::cerr << "demo-server: " << error.what() << '\n';
    return 1;
  }
}
