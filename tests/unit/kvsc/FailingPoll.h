#pragma once

#include <gtest/gtest.h>
#include <sys/resource.h>

/// While it exists, every `poll` of two descriptors fails with EINVAL: they are more than the
/// process may have. One at a time, and for the call under test alone: sanitizers need descriptors
/// for their own checks.
class FailingPoll {
 public:
  FailingPoll() {
    EXPECT_EQ(getrlimit(RLIMIT_NOFILE, &limit_), 0);
    const rlimit one{1, limit_.rlim_max};
    EXPECT_EQ(setrlimit(RLIMIT_NOFILE, &one), 0);
  }
  FailingPoll(const FailingPoll&) = delete;
  FailingPoll& operator=(const FailingPoll&) = delete;
  ~FailingPoll() { setrlimit(RLIMIT_NOFILE, &limit_); }

 private:
  rlimit limit_{};
};
