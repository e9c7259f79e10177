#include "tests/soak/servers/Faults.h"

#include <chrono>

namespace soak {
namespace {

using playerx::failureOfStatus;
using playerx::TransferFailure;
using support::Script;
using Outcomes = std::set<TransferFailure>;
using Ending = Script& (Script::*)();
using F = TransferFailure;

constexpr Ending kClose = &Script::close;
constexpr Ending kReset = &Script::reset;
constexpr Ending kStall = &Script::stall;
constexpr Ending kTruncate = &Script::truncate;

std::string headWith(const std::string& fields) {
  return "HTTP/1.1 200 OK\r\n" + fields + "Connection: close\r\n\r\n";
}

std::string lengthOf(std::size_t size) {
  return "Content-Length: " + std::to_string(size) + "\r\n";
}

std::string wholeHead() { return headWith(lengthOf(wantedFilm().size())); }

Fault fault(const char* name, const std::string& bytes, Ending ending, const Outcomes& outcomes) {
  const auto script = [bytes, ending](const std::string&) {
    Script script;
    script.send(bytes);
    return (script.*ending)();
  };
  return {name, script, outcomes};
}

/// `drops` come a byte at a time, faster than a transfer loses its patience.
Fault dripping(const char* name, const std::string& bytes, const std::string& drops,
               const std::string& rest, Ending ending, const Outcomes& outcomes) {
  const auto script = [=](const std::string&) {
    Script script;
    script.send(bytes).drip(drops, std::chrono::milliseconds(1)).send(rest);
    return (script.*ending)();
  };
  return {name, script, outcomes};
}

Fault status(const char* name, int code, const std::string& fields = "") {
  return fault(name,
               "HTTP/1.1 " + std::to_string(code) + " No\r\n" + fields +
                   "Content-Length: 4\r\nConnection: close\r\n\r\npage",
               kClose, {failureOfStatus(code)});
}

/// `self` in the location stands for the server's address.
Fault redirect(const char* name, const std::string& location, const Outcomes& outcomes) {
  const auto script = [location](const std::string& self) {
    const std::string target = location == "self" ? self : location;
    return Script().send(support::bareResponse("302 Found", "Location: " + target + "\r\n"));
  };
  return {name, script, outcomes};
}

/// A body in chunks of this text.
Fault chunked(const char* name, const std::string& chunks, Ending ending,
              const Outcomes& outcomes) {
  return fault(name, headWith("Transfer-Encoding: chunked\r\n") + chunks, ending, outcomes);
}

std::string manyLines() {
  std::string lines;
  for (int i = 0; i < 40'000; ++i) lines += "X-" + std::to_string(i) + ": of no use\r\n";
  return lines;
}

std::vector<Fault> makeFaults() {
  const std::string film = wantedFilm();
  const std::string half = film.substr(0, film.size() / 2);
  const std::string lengthLine = lengthOf(film.size());
  return {
      // In place of a response.
      fault("an end", "", kClose, {F::kDropped, F::kBadAnswer}),
      fault("an end without goodbye", "", kTruncate, {F::kDropped, F::kBadAnswer}),
      fault("a reset", "", kReset, {F::kDropped}),
      fault("silence", "", kStall, {F::kStalled}),
      fault("another protocol", "220 mail.example ready\r\n", kClose, {F::kBadAnswer}),
      fault("zero bytes", std::string(64, '\0'), kClose, {F::kBadAnswer}),
      fault("high bytes", std::string(64, '\xFF'), kClose, {F::kBadAnswer}),
      fault("a film without a head", film, kClose, {F::kBadAnswer}),

      // Heads.
      fault("half a status line", "HTTP/1.", kClose, {F::kDropped, F::kBadAnswer}),
      fault("half a head", "HTTP/1.1 200 OK\r\nContent-Le", kClose, {F::kDropped, F::kBadAnswer}),
      fault("silence in the head", "HTTP/1.1 200 OK\r\nContent-Le", kStall, {F::kStalled}),
      fault("a reset in the head", "HTTP/1.1 200 OK\r\nContent-Le", kReset, {F::kDropped}),
      fault("a status without a number", "HTTP/1.1 OK\r\n\r\n" + film, kClose, {F::kBadAnswer}),
      fault("a status that is too large", "HTTP/1.1 2000 OK\r\n\r\n" + film, kClose,
            {F::kBadAnswer}),
      fault("a line of a megabyte", "HTTP/1.1 200 OK\r\nA: " + std::string(1 << 20, 'a'), kClose,
            {F::kBadAnswer}),
      fault("many thousand lines", "HTTP/1.1 200 OK\r\n" + manyLines() + "\r\n" + film, kClose,
            {F::kBadAnswer}),
      fault("a zero byte in a line", headWith(lengthLine + std::string("A: \0b\r\n", 7)) + film,
            kClose, {F::kBadAnswer}),

      // Lengths.
      fault("a negative length", headWith("Content-Length: -1\r\n") + film, kClose,
            {F::kBadAnswer}),
      fault("a length of letters", headWith("Content-Length: long\r\n") + film, kClose,
            {F::kBadAnswer}),
      fault("two lengths", headWith(lengthLine + "Content-Length: 5\r\n") + film, kClose,
            {F::kBadAnswer, F::kDropped}),
      fault("a length beyond 64 bits", headWith("Content-Length: 99999999999999999999\r\n") + film,
            kClose, {F::kBadAnswer}),
      fault("a length beyond all disks", headWith("Content-Length: 9000000000000000000\r\n") + film,
            kClose, {F::kNoSpace, F::kDropped}),
      fault("a length that is too large", headWith(lengthOf(film.size() + 1)) + film, kClose,
            {F::kDropped}),

      // Bodies.
      fault("half a body", wholeHead() + half, kClose, {F::kDropped}),
      fault("half a body without goodbye", wholeHead() + half, kTruncate, {F::kDropped}),
      fault("a reset in the body", wholeHead() + half, kReset, {F::kDropped}),
      fault("silence in the body", wholeHead() + half, kStall, {F::kStalled}),
      fault("no goodbye", wholeHead() + film, kTruncate, {F::kNone}),
      fault("silence after the body", wholeHead() + film, kStall, {F::kNone}),
      fault("a compressed body", headWith(lengthLine + "Content-Encoding: gzip\r\n") + film, kClose,
            {F::kBadAnswer}),
      fault("a web page", headWith(lengthLine + "Content-Type: text/html\r\n") + film, kClose,
            {F::kWebPage}),
      fault("a part that was not asked for",
            "HTTP/1.1 206 Partial Content\r\nContent-Range: bytes 0-9/100\r\n"
            "Content-Length: 10\r\nConnection: close\r\n\r\n0123456789",
            kClose, {F::kBadAnswer}),
      chunked("half a chunk", "ffff\r\nhalf", kClose, {F::kDropped}),
      chunked("a chunk without a length", "\r\nfilm\r\n0\r\n\r\n", kClose,
              {F::kBadAnswer, F::kDropped}),
      chunked("a chunk of letters", "long\r\nfilm\r\n0\r\n\r\n", kClose,
              {F::kBadAnswer, F::kDropped}),
      chunked("a chunk beyond 64 bits", "fffffffffffffffff\r\nfilm", kClose,
              {F::kBadAnswer, F::kDropped}),
      chunked("no last chunk", "4\r\nfilm\r\n", kClose, {F::kDropped}),
      chunked("silence between chunks", "4\r\nfilm\r\n", kStall, {F::kStalled}),

      // Drops.
      dripping("a head in drops", "", wholeHead(), film, kClose, {F::kNone}),
      dripping("half a head in drops", "", "HTTP/1.1 200 OK\r\nContent-Le", "", kClose,
               {F::kDropped, F::kBadAnswer}),
      dripping("silence after a head in drops", "", wholeHead(), "", kStall, {F::kStalled}),
      dripping("a reset after drops of a body", wholeHead(), half.substr(0, 100), "", kReset,
               {F::kDropped}),
      dripping("a body that ends in drops", wholeHead() + film.substr(0, film.size() - 100),
               film.substr(film.size() - 100), "", kClose, {F::kNone}),
      dripping("half a body that ends in drops", wholeHead() + half, half.substr(0, 100), "",
               kClose, {F::kDropped}),
      dripping("silence after drops of a body", wholeHead() + half, half.substr(0, 100), "", kStall,
               {F::kStalled}),
      dripping("a chunk in drops", headWith("Transfer-Encoding: chunked\r\n"), "4\r\nfilm\r\n", "",
               kClose, {F::kDropped}),
      dripping("a redirect in drops", "", "HTTP/1.1 302 Found\r\nLocation: ftp://h/\r\n", "\r\n",
               kClose, {F::kBadRedirect}),

      // Statuses.
      status("no content", 204),
      status("not modified", 304),
      status("bad request", 400),
      status("who are you", 401, "WWW-Authenticate: Basic realm=\"f\"\r\n"),
      status("forbidden", 403),
      status("not found", 404),
      status("gone", 410),
      status("no such range", 416),
      status("too many requests", 429),
      status("for legal reasons", 451),
      status("internal error", 500),
      status("bad gateway", 502),
      status("busy", 503),
      status("gateway timeout", 504),

      // Redirects.
      redirect("a loop", "self", {F::kRedirectLoop}),
      redirect("a redirect to a file", "file:///etc/passwd", {F::kBadRedirect}),
      redirect("a redirect to another scheme", "ftp://localhost/film.avi", {F::kBadRedirect}),
      redirect("a redirect to nonsense", "http://[", {F::kBadRedirect}),
      redirect("a redirect to a closed port", "http://127.0.0.1:1/film.avi", {F::kRefused}),
      status("a redirect to nowhere", 302),
  };
}

}  // namespace

std::string wantedFilm() {
  std::string film(20'000, '\0');
  for (std::size_t i = 0; i < film.size(); ++i) film[i] = static_cast<char>(i * 7 + i / 256);
  return film;
}

const std::vector<Fault>& faults() {
  static const std::vector<Fault> all = makeFaults();
  return all;
}

}  // namespace soak
