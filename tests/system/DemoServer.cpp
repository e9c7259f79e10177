#include "tests/system/DemoServer.h"

#include <stdexcept>

#include "tests/system/BigFile.h"

namespace system_test {

namespace fs = std::filesystem;

DemoServer::DemoServer(std::uint64_t filmSize, std::uint64_t rate) {
  for (const char* name : {"media", "tickets"}) fs::create_directories(folder_ / name);
  writeDistinctFile(film(), filmSize);
  const support::Identity issuer = support::pki::authority("Demo");
  const support::Identity server =
      support::pki::issue(issuer, {.commonName = "localhost", .dnsNames = {"localhost"}});
  folder_.write("ca.pem", issuer.certificatePem());
  folder_.write("server.pem", server.certificatePem());
  folder_.write("server.key", server.keyPem());
  process_ = std::make_unique<support::Process>(std::vector<std::string>{
      DEMO_SERVER, "--stay", "--host", "localhost", "--media", folder_ / "media", "--protect",
      "film.mkv", "--tickets", folder_ / "tickets", "--certificate", folder_ / "server.pem",
      "--private-key", folder_ / "server.key", "--rate", std::to_string(rate)});
  if (!process_->waitForOutput("\n")) throw std::runtime_error(process_->errors());
  address_ = Json::parse(process_->output())["address"];
}

std::string DemoServer::ticket() {
  const fs::path copy = folder_ / ("ticket" + std::to_string(++tickets_) + ".tix");
  fs::copy_file(folder_ / "tickets/film.tix", copy);
  return copy;
}

void DemoServer::misbehave(const std::string& mode, int times) {
  ask({"-d", Json{{"mode", mode}, {"times", times}}.dump(), address_ + "/control"});
}

Json DemoServer::report() { return Json::parse(ask({address_ + "/control"})); }

std::uint64_t DemoServer::lastConfirmedBytes() {
  const Json all = report()["confirmations"];
  return all.empty() ? 0 : all.back()["bytes"].get<std::uint64_t>();
}

void DemoServer::introduceTo(PlayerHome& home) const {
  home.addOptions({"--services", address_, "--cacert", authority()});
}

std::string DemoServer::ask(const std::vector<std::string>& curlArguments) {
  std::vector<std::string> command = {"curl", "-sS", "--fail", "--cacert", authority()};
  command.insert(command.end(), curlArguments.begin(), curlArguments.end());
  support::Process curl(command);
  if (curl.wait() != 0)
    throw std::runtime_error("the demo's server does not answer: " + curl.errors());
  return curl.output();
}

}  // namespace system_test
