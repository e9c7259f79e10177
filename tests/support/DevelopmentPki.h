#pragma once

#include <string>

#include "tests/support/TestPki.h"

namespace support {

/// The development credentials of the source tree, with the authorities' private keys: what a test
/// server needs so that the client under test, which trusts only its environment's authority, takes
/// it for a right one. Failure: std::runtime_error when a file cannot be read.
namespace development {

/// Signs the servers of PRODUCTION, JTEST, ITEST and ETEST.
Identity productionAuthority();
/// Signs the servers of LOCALHOST.
Identity testAuthority();
/// The authority for an environment's name.
Identity authorityOf(const std::string& environment);
/// The client certificate and key of an environment on this platform.
Identity clientOf(const std::string& environment);

}  // namespace development
}  // namespace support
