#include "playerx/cli/Options.h"

#include <CLI/CLI.hpp>
#include <charconv>
#include <functional>
#include <iostream>
#include <map>

#include "playerx/cli/TerminalText.h"

namespace playerx::cli {

namespace {

/// Higher positions are typing errors.
constexpr int kMostItems = 1'000'000;

void addGlobalOptions(CLI::App& app, Options& options) {
  app.option_defaults()->take_last();
  app.add_option("--data", options.session.dataFolder,
                 "Folder of the queue and of unfinished files");
  app.add_option("--media", options.session.mediaFolder, "Folder that receives the films");
  app.add_option("--cacert", options.session.caFile, "PEM file of certificate authorities to trust")
      ->check(CLI::ExistingFile);
  app.add_option("--services", options.session.services, "Address of the online services");
  app.add_option("--plugins", options.session.pluginFolder, "Folder of the plug-ins")
      ->check(CLI::ExistingDirectory);
  app.add_flag("--diagnostics", options.diagnostics,
               "Print the module's own diagnostics on standard error");
  app.add_flag("--json", options.json, "One JSON object per line on standard output");
}

void addGet(CLI::App& app, Options& options) {
  CLI::App* get = app.add_subcommand("get", "Add films, then download until nothing is left");
  get->add_option("input", options.inputs, "Addresses (http, https) or ticket files (.tix)");
  get->add_flag("--play", options.play, "Play each film as soon as enough of it is there");
  get->add_option("--player", options.session.player, "Program that plays; mpv unless told");
  get->callback([&options] { options.command = Options::kGet; });
}

[[noreturn]] void complain(const std::string& sentence) { throw CLI::ValidationError(sentence); }

int positionOf(const std::string& text) {
  int position = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), position);
  const bool isWhole = error == std::errc() && end == text.data() + text.size();
  if (isWhole && position >= 1 && position <= kMostItems) return position;
  complain("\"" + printable(text) +
           "\" is no position; give a whole number from 1 on, as `list` prints it.");
}

Options::Direction directionOf(const std::string& text) {
  static const std::map<std::string, Options::Direction> kDirections = {
      {"up", Options::kUp},
      {"down", Options::kDown},
      {"top", Options::kTop},
      {"bottom", Options::kBottom}};
  const auto found = kDirections.find(text);
  if (found != kDirections.end()) return found->second;
  complain("\"" + printable(text) + "\" is no direction; give up, down, top or bottom.");
}

/// A required argument; `take` reads it.
void addArgument(CLI::App& command, const char* name, const char* help,
                 const std::function<void(const std::string&)>& take) {
  command.add_option_function<std::string>(name, take, help)->required();
}

void addPositioned(CLI::App& app, Options& options, const char* name, const char* help,
                   Options::Command command) {
  CLI::App* sub = app.add_subcommand(name, help);
  addArgument(*sub, "N", "Position as `list` prints it",
              [&options](const std::string& text) { options.position = positionOf(text); });
  sub->callback([&options, command] { options.command = command; });
  if (command != Options::kMove) return;
  addArgument(*sub, "direction", "up, down, top or bottom",
              [&options](const std::string& text) { options.direction = directionOf(text); });
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

std::string commandsOf(const CLI::App& app) {
  std::string names;
  const auto commands = app.get_subcommands([](const CLI::App*) { return true; });
  for (const CLI::App* command : commands) {
    if (!names.empty()) names += command == commands.back() ? " and " : ", ";
    names += command->get_name();
  }
  return names;
}

/// One plain sentence on an option without its value or a command without its argument; empty for
/// every other error.
std::string complaintOfMissing(const CLI::App& app, const CLI::ParseError& error) {
  const auto code = static_cast<CLI::ExitCodes>(error.get_exit_code());
  const std::string words = error.what();  // "NAME: ..." and "NAME is required"
  if (code == CLI::ExitCodes::ArgumentMismatch) {
    return "The option \"" + words.substr(0, words.find(':')) + "\" needs a value.";
  }
  const auto commands = app.get_subcommands();
  if (code != CLI::ExitCodes::RequiredError || commands.empty()) return "";
  return "The argument \"" + words.substr(0, words.find(" is required")) +
         "\" is missing; `playerx-cli " + commands.back()->get_name() + " --help` shows the usage.";
}

/// One plain sentence on what is wrong with the arguments.
std::string complaintOf(const CLI::App& app, const CLI::ParseError& error) {
  const std::string missing = complaintOfMissing(app, error);
  if (!missing.empty()) return missing;
  const bool isCommandMissing = app.get_subcommands().empty();
  const std::vector<std::string> unknown = app.remaining(true);
  const auto code = static_cast<CLI::ExitCodes>(error.get_exit_code());
  const bool isTooMuch = code == CLI::ExitCodes::ExtrasError;
  const bool isTooLittle = code == CLI::ExitCodes::RequiredError && isCommandMissing;
  if (!isTooMuch && !isTooLittle) return error.what();
  if (unknown.empty()) return "A command is missing; the commands are " + commandsOf(app) + ".";
  const std::string word = "\"" + printable(unknown.front()) + "\"";
  if (unknown.front().starts_with("-")) {
    return "There is no option " + word + "; `playerx-cli --help` names those that there are.";
  }
  if (isCommandMissing) {
    return "There is no command " + word + "; the commands are " + commandsOf(app) + ".";
  }
  return "The argument " + word + " is one too many; `playerx-cli --help` shows the usage.";
}

/// The command that `help NAME` asks about, or the program for `help` alone; null for all other
/// arguments.
const CLI::App* subjectOfHelp(const CLI::App& app, int argc, const char* const* argv) {
  if (argc < 2 || argc > 3 || std::string(argv[1]) != "help") return nullptr;
  if (argc == 2) return &app;
  const auto named =
      app.get_subcommands([&](const CLI::App* command) { return command->get_name() == argv[2]; });
  return named.empty() ? nullptr : named.front();
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
  app.set_version_flag("--version", "playerx-cli " PLAYERX_VERSION, "Print the version");
  if (const CLI::App* subject = subjectOfHelp(app, argc, argv)) {
    std::cout << subject->help(subject == &app ? "" : app.get_name()) << std::flush;
    *status = kExitDone;
    return std::nullopt;
  }
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    const bool isHelp = error.get_exit_code() == 0;
    if (isHelp) app.exit(error);
    if (!isHelp) std::cerr << "playerx-cli: " << complaintOf(app, error) << std::endl;
    *status = isHelp ? kExitDone : kExitUsage;
    return std::nullopt;
  }
  return options;
}

}  // namespace playerx::cli
