#pragma once

#include <string>

#include "download/HttpResult.h"

/// What the headers of an answer say about a file, and what follows from it for an `HttpResult`.
namespace download {

/// Takes note of a length, its name in any case, or of a location in exactly this spelling. Their
/// values stand at fixed positions, whatever separates them from the name.
void noteHeader(const std::string& line, HttpResult& result);

/// Judges an answer to HEAD by the length and the location that the client has found in it; where
/// one is empty, by what was noted.
void judgeInfo(const std::string& length, const std::string& location, HttpResult& result);

}  // namespace download
