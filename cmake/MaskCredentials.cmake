# cmake -DFOLDER=... -DSOURCE=... -DPAIRS=name=file;... -P MaskCredentials.cmake
#
# Writes a C++ source that holds each file of the folder masked with a keystream of its own. The
# same files give the same source. What takes the mask off is kvsc/CredentialText.cpp; the two
# must agree on the keystream.

# Appends to `result` the bytes of the hexadecimal text, masked, as C++ numbers.
function(mask hex seed result)
  set(numbers)
  string(LENGTH "${hex}" digits)
  math(EXPR last "${digits} - 2")
  set(state ${seed})
  foreach(position RANGE 0 ${last} 2)
    string(SUBSTRING "${hex}" ${position} 2 byte)
    math(EXPR state "(${state} * 1103515245 + 12345) & 2147483647")
    math(EXPR masked "0x${byte} ^ ((${state} >> 16) & 255)")
    string(APPEND numbers "${masked},")
  endforeach()
  set(${result} "${numbers}" PARENT_SCOPE)
endfunction()

set(content "// Generated: the credentials, masked.\n#include \"kvsc/MaskedCredentials.h\"\n\n"
            "namespace kvsc::credentials {\n")
string(CONCAT content ${content})
foreach(pair IN LISTS PAIRS)
  string(REGEX REPLACE "=.*$" "" name "${pair}")
  string(REGEX REPLACE "^.*=" "" stem "${pair}")
  file(READ "${FOLDER}/${stem}.pem" hex HEX)
  string(SHA256 digest "${stem}${hex}")
  string(SUBSTRING "${digest}" 0 7 seed)
  math(EXPR seed "0x${seed}")
  mask("${hex}" ${seed} numbers)
  string(LENGTH "${hex}" length)
  math(EXPR length "${length} / 2")
  string(APPEND content
    "static constexpr unsigned char ${name}Bytes[] = {${numbers}};\n"
    "const MaskedText ${name} = {${name}Bytes, ${length}, ${seed}};\n")
endforeach()
string(APPEND content "}  // namespace kvsc::credentials\n")
file(WRITE "${SOURCE}" "${content}")
