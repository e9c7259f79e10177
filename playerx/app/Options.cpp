#include "playerx/app/Options.h"

#include <CLI/CLI.hpp>
#include <map>

namespace playerx {

namespace {

/// More items than any queue holds.
constexpr int kMostItems = 1'000'000;

void addGlobalOptions(CLI::App& app, Options& options) {
  app.option_defaults()->take_last();
  app.add_option("--data", options.dataFolder, "Folder of the queue and of unfinished files");
  app.add_option("--media", options.mediaFolder, "Folder that receives the films");
  app.add_option("--cacert", options.caFile, "PEM file of certificate authorities to trust")
      ->check(CLI::ExistingFile);
  app.add_option("--services", options.services, "Address of the online services");
  app.add_option("--plugins", options.pluginFolder, "Folder of the plug-ins")
      ->check(CLI::ExistingDirectory);
  app.add_flag("--diagnostics", options.diagnostics,
               "Print the module's own diagnostics on standard error");
  app.add_flag("--json", options.json, "One JSON object per line on standard output");
}

void addGet(CLI::App& app, Options& options) {
  CLI::App* get = app.add_subcommand("get", "Add films, then download until nothing is left");
  get->add_option("input", options.inputs, "Addresses (http, https) or ticket files (.tix)");
  get->add_flag("--play", options.play, "Play each film as soon as enough of it is there");
  get->add_option("--player", options.player, "Program that plays; mpv unless told");
  get->callback([&options] { options.command = Options::kGet; });
}

void addPositioned(CLI::App& app, Options& options, const char* name, const char* help,
                   Options::Command command) {
  CLI::App* sub = app.add_subcommand(name, help);
  sub->add_option("N", options.position, "Position as `list` prints it")
      ->required()
      ->check(CLI::Range(1, kMostItems));
  sub->callback([&options, command] { options.command = command; });
  if (command != Options::kMove) return;
  static const std::map<std::string, Options::Direction> kDirections = {
      {"up", Options::kUp},
      {"down", Options::kDown},
      {"top", Options::kTop},
      {"bottom", Options::kBottom}};
  sub->add_option("direction", options.direction, "up, down, top or bottom")
      ->required()
      ->transform(CLI::CheckedTransformer(kDirections));
}

void addQueueCommands(CLI::App& app, Options& options) {
  app.add_subcommand("list", "Print the queue and leave it as it is")->callback([&options] {
    options.command = Options::kList;
  });
  addPositioned(app, options, "remove", "Take an item out of the queue", Options::kRemove);
  addPositioned(app, options, "retry", "Queue a failed item again", Options::kRetry);
  addPositioned(app, options, "move", "Move an item", Options::kMove);
  app.add_subcommand("clear", "Take all completed items out of the queue")->callback([&options] {
    options.command = Options::kClear;
  });
  CLI::App* explain = app.add_subcommand("explain", "Say what a ticket would download");
  explain->add_option("ticket", options.inputs, "Ticket files (.tix)")->required();
  explain->callback([&options] { options.command = Options::kExplain; });
}

}  // namespace

std::optional<Options> parseOptions(int argc, const char* const* argv, int* status) {
  Options options;
  CLI::App app("Downloads films and keeps a queue of them.", "playerx-cli");
  app.require_subcommand(1);
  app.fallthrough();
  addGlobalOptions(app, options);
  addGet(app, options);
  addQueueCommands(app, options);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    *status = app.exit(error) == 0 ? kExitDone : kExitUsage;
    return std::nullopt;
  }
  return options;
}

}  // namespace playerx
