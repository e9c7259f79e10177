#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "kvsc/Dialer.h"
#include "kvsc/HttpUtilityVirtual.h"
#include "kvsc/SSLClient.h"
#include "tests/support/ScriptedServer.h"

/// What the callbacks of a client were given.
struct Received {
  std::vector<std::string> lines;
  std::vector<std::string> pieces;
  std::string file;
  std::vector<double> progress;
  int cancelAt = -1;  ///< the call of the progress callback, from 0, that cancels

  std::string body() const;
};

/// Connects to a server that has gone away by then.
class GoneDialer : public kvsc::Dialer {
 public:
  int dial(const std::string& host, const std::string& port, kvsc::Waiter& waiter) override;
};

/// A caller's utility that only collects what is written to it.
class CollectingUtility : public kvsc::HttpUtilityVirtual {
 public:
  kvsc::HttpErrorIds get(const std::string&) override { return kvsc::HTTP_ERROR_NONE; }
  kvsc::HttpErrorIds post(const std::string&, const std::string&) override {
    return kvsc::HTTP_ERROR_NONE;
  }
  std::string parseResponse(const unsigned char*, int) override { return ""; }

  std::string collected() const;
};

/// A client whose callbacks are recorded, its session, and a plain server that follows a script.
class Exchange : public testing::Test {
 protected:
  Exchange();

  /// A GET of the server's `path`, its result. Callbacks are set; the file context is not.
  kvsc::HttpErrorIds get(const std::string& path = "/", long ifModifiedSince = 0);
  kvsc::HttpErrorIds head(const std::string& path = "/");
  kvsc::HttpErrorIds post(const std::string& data, const std::string& path = "/",
                          bool usePost = true);

  /// The answer of the next connection.
  void answer(const std::string& bytes) { server_.next(support::Script::answer(bytes)); }

  /// What the server was sent on a connection, once that has ended.
  std::string requestOf(std::size_t connection = 0) { return server_.ended(connection).received; }

  /// The whole request that a GET sends.
  static std::string getRequest(const std::string& target, const std::string& headers = "");

  std::string error() const { return client_.getErrorString(); }

  support::ScriptedServer server_;
  Received received_;
  kvsc::SSLClient client_{"LOCALHOST"};
  kvsc::SSLSession session_;
};

/// The text of a redirect that is not followed.
extern const char* const kRedirectRefused;
