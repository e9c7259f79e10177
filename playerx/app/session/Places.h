#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace playerx::session {

/// What a face was told about this run, by options for example. An empty text leaves the choice to
/// the user's settings.
struct SessionOptions {
  std::string dataFolder;    ///< queue and unfinished films
  std::string mediaFolder;   ///< finished films
  std::string pluginFolder;  ///< plug-ins; empty: beside the program
  std::string caFile;        ///< PEM file of the authorities to trust; empty: the system's
  std::string player;        ///< program that plays; empty: "mpv" when present
  std::string services;      ///< address of the online services
};

/// The folders of this run, absolute.
struct Places {
  std::string data;
  std::string media;
};

/// Makes folders and preferences of the whole process what the options and the user's settings say.
/// Needs the application's names to be set.
Places setUpPlaces(const SessionOptions& options);

/// Where plug-ins are looked for.
std::vector<std::filesystem::path> pluginFolders(const SessionOptions& options);

/// The user's home folder: what HOME says, or else what the account says. Nullopt when neither
/// names a folder of the user's own. Either may be null.
std::optional<std::string> homeFolder(const char* variable, const char* ofAccount);

/// Has HOME name the home folder, for everything that looks there later. Returns whether there is
/// one. Call it before any thread is started.
bool setHome();

/// Without a home folder: one sentence on the folders that the options leave open; empty when they
/// name all. `dataHome` is XDG_DATA_HOME, which may be null.
std::string missingHomeProblem(const SessionOptions& options, const char* dataHome);

/// Why a folder that the options name cannot be used, in one sentence: its name is not text in
/// UTF-8, or the data folder is no folder and cannot become one. Empty when all can be used.
/// Creates nothing.
std::string folderProblem(const SessionOptions& options);

}  // namespace playerx::session
