#pragma once

/// Makes the allocation after `passed` more of this thread fail, once, while it exists.
class FailingNew {
 public:
  explicit FailingNew(int passed);
  FailingNew(const FailingNew&) = delete;
  FailingNew& operator=(const FailingNew&) = delete;
  ~FailingNew();

  /// Whether the allocation has come, and failed.
  bool hasFailed() const;
};
