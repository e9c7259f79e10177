#pragma once

namespace download {

/// The host's shared preferences object, `KPXPreferences::userSettings`.
///
/// Whoever comes first of the worker and its manager creates it, whoever goes first deletes it. Not
/// synchronised: both are built and destroyed on the host's thread, when no other thread uses the
/// object. Neither operation fails.

/// Creates the object, in the application's group, unless there is one.
void ensureSharedPreferences();

/// Deletes the object, if there is one; until it is ensured again, there is none.
void dropSharedPreferences();

}  // namespace download
