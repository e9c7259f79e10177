#pragma once

namespace download {

/// One use of the host's shared preferences object, `KPXPreferences::userSettings`.
///
/// The first use creates the object, in the application's group, unless the host has made one; the
/// end of the last use deletes it and sets the pointer to null. So the worker of a manager that is
/// still leaving does not take the object away from the next manager's. Not synchronised: built and
/// destroyed on the host's thread. Does not fail.
class SharedPreferences {
 public:
  SharedPreferences();
  SharedPreferences(const SharedPreferences&) = delete;
  SharedPreferences& operator=(const SharedPreferences&) = delete;
  ~SharedPreferences();

  /// Deletes the object, if there is one, unless it is in use.
  static void deleteUnused();

 private:
  static int uses;
};

}  // namespace download
