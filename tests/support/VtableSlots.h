#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

namespace support {

/// Reads the places of virtual operations out of compiled classes, as the C++ ABI of Linux lays
/// them down: a pointer to a virtual member holds the operation's offset in the table. Pure.

/// The representation of a pointer to a member function.
struct MemberPointer {
  std::intptr_t pointer;
  std::intptr_t adjustment;
};

/// Slot, from 0, of `operation` in the table of its class, the destructor's two slots included;
/// -1 when the operation is not virtual.
template <class Class, class Function>
int slotOf(Function Class::*operation) {
  const auto read = std::bit_cast<MemberPointer>(operation);
#if defined(__aarch64__) || defined(__arm__)
  const bool isVirtual = (read.adjustment & 1) != 0;
  const std::intptr_t offset = read.pointer;
#else
  const bool isVirtual = (read.pointer & 1) != 0;
  const std::intptr_t offset = read.pointer - 1;
#endif
  return isVirtual ? static_cast<int>(offset / static_cast<std::intptr_t>(sizeof(void*))) : -1;
}

}  // namespace support
