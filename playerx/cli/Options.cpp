#include "playerx/cli/Options.h"

#include <CLI/CLI.hpp>
#include <charconv>
#include <filesystem>
#include <functional>
#include <iostream>
#include <map>

#include "playerx/app/inputs/InputText.h"
#include "playerx/app/inputs/OptionFault.h"
#include "playerx/cli/Suggestion.h"
#include "playerx/cli/TerminalText.h"
#include "playerx/cli/TransferOptions.h"
#include "playerx/transfers/Address.h"

namespace playerx::cli {

using session::Request;
using Action = Request::Action;

namespace {

/// Higher positions are typing errors.
constexpr int kMostItems = 1'000'000;

[[noreturn]] void complain(const std::string& sentence) { throw CLI::ValidationError(sentence); }

/// An empty variable of a shell would stand for the usual folder.
void checkFolder(const std::string& name) {
  if (name.empty()) complain("A folder without a name cannot be used; check --data and --media.");
}

void checkAuthorities(const std::string& name) {
  std::error_code error;
  if (std::filesystem::is_regular_file(name, error)) return;
  complain("There is no file " + quoted(name) + " of certificate authorities; check --cacert.");
}

void checkPlugins(const std::string& name) {
  std::error_code error;
  if (std::filesystem::is_directory(name, error)) return;
  complain("There is no folder " + quoted(name) + " of plug-ins; check --plugins.");
}

/// An option that names a place on the disk; `check` complains of one that cannot be used.
void addPlace(CLI::App& app, const char* name, std::string& place, const char* help,
              void (*check)(const std::string&), const char* type = "DIR") {
  const auto take = [&place, check](const std::string& text) {
    check(text);
    place = text;
  };
  app.add_option_function<std::string>(name, take, help)->type_name(type);
}

void addGlobalOptions(CLI::App& app, Options& options) {
  app.option_defaults()->take_last();
  addPlace(app, "--data", options.session.dataFolder, "Folder of the queue and of unfinished files",
           checkFolder);
  addPlace(app, "--media", options.session.mediaFolder, "Folder that receives the films",
           checkFolder);
  addPlace(app, "--cacert", options.session.caFile, "PEM file of certificate authorities to trust",
           checkAuthorities, "FILE");
  app.add_option("--services", options.session.services, "Address of the online services")
      ->type_name("ADDRESS");
  addPlace(app, "--plugins", options.session.pluginFolder, "Folder of the plug-ins", checkPlugins);
  app.add_flag("--diagnostics", options.diagnostics,
               "Print the module's own diagnostics on standard error");
  app.add_flag("-q,--quiet", options.quiet, "Print failures and advice alone, no progress");
  app.add_flag("--json", options.json, "One JSON object per line on standard output");
}

int positionOf(const std::string& text) {
  int position = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), position);
  const bool isWhole = error == std::errc() && end == text.data() + text.size();
  if (isWhole && position >= 1 && position <= kMostItems) return position;
  complain(quoted(text) + " is no position; give a whole number from 1 on, as `list` prints it.");
}

Request::Direction directionOf(const std::string& text) {
  using enum Request::Direction;
  static const std::map<std::string, Request::Direction> kDirections = {
      {"up", kUp}, {"down", kDown}, {"top", kTop}, {"bottom", kBottom}};
  const auto found = kDirections.find(text);
  if (found != kDirections.end()) return found->second;
  complain(quoted(text) + " is no direction; give up, down, top or bottom.");
}

std::string nameOf(const std::string& text) {
  const std::string fault = inputs::faultOfName(text);
  if (fault.empty()) return text;
  complain(printable(fault));
}

/// Arguments and options of the commands that add films.
void addInputs(CLI::App& command, Options& options) {
  command
      .add_option("input", options.request.inputs, "Addresses (http, https) or ticket files (.tix)")
      ->type_name("");
  command
      .add_option("-i,--input-file", options.inputFiles,
                  "List of more of them, one a line; - for standard input; may be repeated")
      ->take_all()
      ->expected(1)
      ->type_name("FILE")
      ->allow_extra_args(false);
  command
      .add_option_function<std::string>(
          "-o,--output",
          [&options](const std::string& text) { options.request.name = nameOf(text); },
          "File name of the film, for one address")
      ->type_name("NAME");
  command.add_flag("--again", options.request.again, "Fetch anew what is there already");
  addTransferOptions(command, options.request);
}

void addGet(CLI::App& app, Options& options) {
  CLI::App* get = app.add_subcommand("get", "Add films, then download until nothing is left");
  addInputs(*get, options);
  get->add_flag("--play", options.request.plays, "Play each film as soon as enough of it is there");
  get->add_option("--player", options.session.player, "Program that plays; mpv unless told")
      ->type_name("PROGRAM");
  get->callback([&options] {
    options.command = Options::kGet;
    options.request.action = Action::kAdd;
  });
}

/// A required argument; `take` reads it.
void addArgument(CLI::App& command, const char* name, const char* help,
                 const std::function<void(const std::string&)>& take) {
  command.add_option_function<std::string>(name, take, help)->required()->type_name("");
}

/// A command that is a request to the queue.
CLI::App* addRequest(CLI::App& app, Options& options, const char* name, const char* help,
                     Action action) {
  CLI::App* const sub = app.add_subcommand(name, help);
  sub->callback([&options, action] {
    options.command = Options::kRequest;
    options.request.action = action;
  });
  return sub;
}

/// The position of the item that a request is about.
void addPosition(CLI::App& command, Options& options) {
  addArgument(command, "N", "Position as `list` prints it",
              [&options](const std::string& text) { options.request.position = positionOf(text); });
}

/// A position, or all items.
CLI::Option* addPositionOrAll(CLI::App& command, Options& options) {
  return command
      .add_option_function<std::string>(
          "N",
          [&options](const std::string& text) {
            options.request.position = text == "all" ? 0 : positionOf(text);
          },
          "Position as `list` prints it, or all")
      ->type_name("");
}

void addEdits(CLI::App& app, Options& options) {
  CLI::App* const remove =
      addRequest(app, options, "remove", "Take an item out of the queue", Action::kRemove);
  addPosition(*remove, options);
  remove->add_flag("--with-film", options.request.withFilm, "Delete its film too");
  CLI::App* const retry =
      addRequest(app, options, "retry", "Queue a failed item again", Action::kRetry);
  addPositionOrAll(*retry, options)->required();
  CLI::App* const move = addRequest(app, options, "move", "Move an item", Action::kMove);
  addPosition(*move, options);
  addArgument(*move, "direction", "up, down, top or bottom", [&options](const std::string& text) {
    options.request.direction = directionOf(text);
  });
}

void addLimit(CLI::App& app, Options& options) {
  CLI::App* const limit = addRequest(app, options, "limit",
                                     "Limit the rate of what is being downloaded", Action::kLimit);
  addArgument(*limit, "rate", "Bytes per second (500K, 2M), or none",
              [&options](const std::string& text) { options.request.rateLimit = rateOf(text); });
}

void addQueueCommands(CLI::App& app, Options& options) {
  CLI::App* const add =
      addRequest(app, options, "add", "Add films to the queue without starting", Action::kAdd);
  addInputs(*add, options);
  add->parse_complete_callback([&options] { options.request.starts = false; });
  addRequest(app, options, "list", "Print the queue and leave it as it is", Action::kList)
      ->add_flag("--long", options.isLong, "Print the address of each film as well");
  addRequest(app, options, "watch", "Show what another player downloads", Action::kWatch);
  addEdits(app, options);
  addPositionOrAll(
      *addRequest(app, options, "pause", "Let the queue or an item wait", Action::kPause), options);
  addPositionOrAll(
      *addRequest(app, options, "resume", "Let the queue or an item go on", Action::kResume),
      options);
  addLimit(app, options);
  addRequest(app, options, "clear", "Take all completed items out of the queue", Action::kClear);
  addRequest(app, options, "clean", "Delete what is left of films that are not in the queue",
             Action::kClean)
      ->add_flag("--dry-run", options.request.dryRun, "Name it and keep it");
}

void addExplain(CLI::App& app, Options& options) {
  CLI::App* explain = app.add_subcommand("explain", "Say what a ticket would download");
  explain->add_option("ticket", options.request.inputs, "Ticket files (.tix)")
      ->required()
      ->type_name("");
  explain->callback([&options] { options.command = Options::kExplain; });
}

/// The names of the commands that the help lists.
std::vector<std::string> commandNames(const CLI::App& app) {
  std::vector<std::string> names;
  const auto commands =
      app.get_subcommands([](const CLI::App* command) { return !command->get_group().empty(); });
  for (const CLI::App* command : commands) names.push_back(command->get_name());
  return names;
}

std::string commandsOf(const CLI::App& app) {
  std::string list;
  const std::vector<std::string> names = commandNames(app);
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (i > 0) list += i + 1 == names.size() ? " and " : ", ";
    list += names[i];
  }
  return list;
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

/// The names of all options of the program and of the command that was given.
std::vector<std::string> optionsOf(const CLI::App& app) {
  std::vector<std::string> names;
  std::vector<const CLI::App*> sources = {&app};
  for (const CLI::App* command : app.get_subcommands()) sources.push_back(command);
  for (const CLI::App* source : sources) {
    for (const CLI::Option* option : source->get_options()) {
      for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
    }
  }
  return names;
}

/// The end of a complaint: the name that was probably meant, or else where all are.
std::string advice(const std::string& typed, const std::vector<std::string>& names,
                   const std::string& all) {
  const std::string nearest = nearestTo(typed, names);
  return nearest.empty() ? "; " + all + "." : "; did you mean \"" + nearest + "\"?";
}

/// One plain sentence on a word that is not the name of a command.
std::string complaintOfCommand(const CLI::App& app, const std::string& typed) {
  return "There is no command " + quoted(typed) +
         advice(typed, commandNames(app), "the commands are " + commandsOf(app));
}

/// One plain sentence on the first word that could not be read.
std::string complaintOfWord(const CLI::App& app, const std::string& typed) {
  if (typed.starts_with("-")) {
    // The value may be secret.
    const std::string name = typed.substr(0, typed.find('='));
    return "There is no option \"" + printable(name) + "\"" +
           advice(name, optionsOf(app), "`playerx-cli --help` names those that there are");
  }
  const std::string word = quoted(typed);
  if (!app.get_subcommands().empty()) {
    return "The argument " + word + " is one too many; `playerx-cli --help` shows the usage.";
  }
  const bool isInput = inputs::isTicketPath(typed) || typed.find("://") != std::string::npos;
  if (isInput) return "A command is missing before " + word + "; `playerx-cli get` downloads it.";
  return complaintOfCommand(app, typed);
}

/// One plain sentence on what is wrong with the arguments.
std::string complaintOf(const CLI::App& app, const CLI::ParseError& error) {
  const std::string missing = complaintOfMissing(app, error);
  if (!missing.empty()) return missing;
  const std::vector<std::string> unknown = app.remaining(true);
  const auto code = static_cast<CLI::ExitCodes>(error.get_exit_code());
  const bool isTooMuch = code == CLI::ExitCodes::ExtrasError;
  const bool isTooLittle = code == CLI::ExitCodes::RequiredError && app.get_subcommands().empty();
  if (!isTooMuch && !isTooLittle) return error.what();
  if (!unknown.empty()) return complaintOfWord(app, unknown.front());
  return "A command is missing; the commands are " + commandsOf(app) + ".";
}

/// What options that are right one by one are wrong about together; empty when nothing is.
std::string contradictionIn(const Options& options) {
  const Request& request = options.request;
  const bool isOne = request.inputs.size() == 1 && options.inputFiles.empty() &&
                     !inputs::isTicketPath(request.inputs.front());
  std::string fault = inputs::faultOfSharing(isOne, request.name, request.options);
  if (!fault.empty()) return fault;
  const bool needsInput = options.command == Options::kRequest && request.action == Action::kAdd;
  if (needsInput && request.inputs.empty() && options.inputFiles.empty()) {
    return "The argument \"input\" is missing; `playerx-cli add --help` shows the usage.";
  }
  return {};
}

/// Prints the usage of the command with this name, or that of the program when it is empty.
void printHelp(const CLI::App& app, const std::string& name) {
  const auto named =
      app.get_subcommands([&name](const CLI::App* command) { return command->get_name() == name; });
  if (named.empty() && !name.empty()) complain(complaintOfCommand(app, name));
  const CLI::App* const subject = name.empty() ? &app : named.front();
  const std::string usage = app.get_name() + (name.empty() ? "" : " " + name);
  // The help of the program itself would be that of the command that was given, which is `help`.
  std::cout << app.get_formatter()->make_help(subject, usage, CLI::AppFormatMode::Normal)
            << std::flush;
}

/// Not in the list of commands: the footer of the help names it.
void addHelp(CLI::App& app) {
  CLI::App* const help = app.add_subcommand("help", "Show the usage, or that of a command");
  const CLI::Option* const name =
      help->add_option("COMMAND", "Command whose usage is shown")->type_name("");
  help->group("");
  help->callback([&app, name] {
    printHelp(app, name->empty() ? "" : name->as<std::string>());
    throw CLI::Success();
  });
}

/// The commands with their options, and what the help says of them.
void addCommands(CLI::App& app, Options& options) {
  app.require_subcommand(1);
  app.fallthrough();
  addGlobalOptions(app, options);
  addGet(app, options);
  addQueueCommands(app, options);
  addExplain(app, options);
  for (CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; })) {
    command->footer(
        "`playerx-cli help` shows the options that all commands have, those of the folders too.");
    command->group("Commands");
  }
  addHelp(app);
  app.get_formatter()->label("SUBCOMMAND", "COMMAND");
  app.footer(
      "`playerx-cli help COMMAND` shows what a command takes. The address of a film ends in .vesk, "
      ".xvid, .avi or .mkv; a ticket may name any file.\n\n"
      "Exit status:\n"
      "  0    everything that it worked on completed\n"
      "  1    something failed, or the queue could not be saved\n"
      "  2    wrong usage, or an argument that cannot be downloaded\n"
      "  130  ended by Ctrl-C; the next `get` goes on from the bytes already there\n\n"
      "Files:\n"
      "  $XDG_DATA_HOME/Vesk/VeskPlayerX  queue and unfinished films (~/.local/share/Vesk/...)\n"
      "  ~/.config/Vesk/Settings.conf     preferences\n"
      "  ~/Videos/Vesk                    films");
  app.set_version_flag("--version", "playerx-cli " PLAYERX_VERSION, "Print the version");
}

/// Prints the help that was asked for, or what is wrong with the arguments. Returns the exit
/// status.
int reportParseEnd(const CLI::App& app, const CLI::ParseError& error) {
  const bool isHelp = error.get_exit_code() == 0;
  if (isHelp) {
    app.exit(error);
  } else {
    std::cerr << "playerx-cli: " << withoutPasswords(complaintOf(app, error)) << std::endl;
  }
  return isHelp ? kExitDone : kExitUsage;
}

}  // namespace

std::optional<Options> parseOptions(int argc, const char* const* argv, int* status) {
  Options options;
  CLI::App app("Downloads films and keeps a queue of them.", "playerx-cli");
  addCommands(app, options);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    *status = reportParseEnd(app, error);
    return std::nullopt;
  }
  const std::string contradiction = contradictionIn(options);
  if (contradiction.empty()) return options;
  std::cerr << "playerx-cli: " << contradiction << std::endl;
  *status = kExitUsage;
  return std::nullopt;
}

}  // namespace playerx::cli
