# The client's credentials: checked when the build is configured, masked when it is built.
#
# vesk_check_credentials(FOLDER)    ends the configuration unless the folder holds a whole set
# vesk_mask_credentials(VARIABLE)   names the generated source that holds the masked set

# The work buffer of the client.
set(VESK_CREDENTIALS_LONGEST 2048)

# What the generated source holds: its names, and the files they come from.
if(CMAKE_SYSTEM_NAME STREQUAL "Linux")
  set(VESK_CREDENTIALS_PLATFORM linux)
else()
  set(VESK_CREDENTIALS_PLATFORM other)
endif()
set(VESK_CREDENTIALS_MASKED
  kProductionCa=production-ca
  kTestCa=test-ca
  kProductionClient=production-${VESK_CREDENTIALS_PLATFORM}-client
  kProductionKey=production-${VESK_CREDENTIALS_PLATFORM}-key
  kJtestClient=jtest-client
  kJtestKey=jtest-key
  kItestClient=itest-client
  kItestKey=itest-key
  kEtestClient=etest-client
  kEtestKey=etest-key
  kLocalhostClient=localhost-client
  kLocalhostKey=localhost-key)

# The whole set, which is the same on every platform.
set(VESK_CREDENTIALS_CERTIFICATES
  production-ca test-ca production-linux-client production-other-client
  jtest-client itest-client etest-client localhost-client)
set(VESK_CREDENTIALS_KEYS
  production-linux-key production-other-key jtest-key itest-key etest-key localhost-key)

function(vesk_credentials_fail file reason)
  message(FATAL_ERROR "VESK_CREDENTIALS_DIR: ${file} ${reason}")
endfunction()

# The number that one base64 character stands for.
function(vesk_base64_value character result)
  string(FIND "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/" "${character}"
    value)
  set(${result} ${value} PARENT_SCOPE)
endfunction()

# The length that the outermost structure of base64 text announces, its own head included; 0 when
# the text does not begin like one of 256 bytes to 64 KB (30 82 and two bytes of length).
function(vesk_announced_length base64 result)
  set(bits 0)
  foreach(position RANGE 5)
    string(SUBSTRING "${base64}" ${position} 1 character)
    vesk_base64_value("${character}" value)
    math(EXPR bits "${bits} * 64 + ${value}")
  endforeach()
  math(EXPR head "${bits} >> 20")
  math(EXPR length "4 + ((${bits} >> 4) & 65535)")
  if(NOT head EQUAL 12418)
    set(length 0)
  endif()
  set(${result} ${length} PARENT_SCOPE)
endfunction()

# Ends the configuration unless the file is one PEM block of one of the kinds, whole from its first
# byte to its last.
function(vesk_check_credential file kinds)
  # Reading it here would end the configuration in words that do not name what to mend.
  execute_process(COMMAND "${CMAKE_COMMAND}" -E cat "${file}"
    RESULT_VARIABLE unreadable OUTPUT_QUIET ERROR_QUIET)
  if(unreadable OR IS_DIRECTORY "${file}")
    vesk_credentials_fail("${file}" "is missing or cannot be read")
  endif()
  file(SIZE "${file}" size)
  if(size GREATER VESK_CREDENTIALS_LONGEST)
    vesk_credentials_fail("${file}"
      "has ${size} characters; at most ${VESK_CREDENTIALS_LONGEST} fit the client's buffer")
  endif()
  # As text, a file seems to end at its first zero byte.
  file(READ "${file}" hex HEX)
  string(REGEX REPLACE "(..)" "\\1 " hex "${hex}")
  file(READ "${file}" text)
  if(hex MATCHES "00 " OR NOT text MATCHES
     "^-----BEGIN (${kinds})-----\r?\n([A-Za-z0-9+/\r\n]+=*)\r?\n-----END (${kinds})-----\r?\n?$"
     OR NOT CMAKE_MATCH_1 STREQUAL CMAKE_MATCH_3)
    vesk_credentials_fail("${file}" "is not one PEM block of the kind ${kinds}")
  endif()
  set(base64 "${CMAKE_MATCH_2}")
  string(REGEX REPLACE "[\r\n]" "" base64 "${base64}")
  string(LENGTH "${base64}" characters)
  string(REGEX REPLACE "=+$" "" base64 "${base64}")
  string(LENGTH "${base64}" digits)
  math(EXPR left "${characters} % 4")
  math(EXPR bytes "${digits} * 3 / 4")
  set(announced 0)
  if(digits GREATER 8)
    vesk_announced_length("${base64}" announced)
  endif()
  if(NOT left EQUAL 0 OR NOT announced EQUAL bytes)
    vesk_credentials_fail("${file}" "is damaged: its content is not as long as it says")
  endif()
endfunction()

function(vesk_check_credentials folder)
  foreach(name IN LISTS VESK_CREDENTIALS_CERTIFICATES)
    vesk_check_credential("${folder}/${name}.pem" "CERTIFICATE")
  endforeach()
  foreach(name IN LISTS VESK_CREDENTIALS_KEYS)
    vesk_check_credential("${folder}/${name}.pem" "RSA PRIVATE KEY|PRIVATE KEY")
  endforeach()
endfunction()

function(vesk_mask_credentials variable)
  set(VESK_CREDENTIALS_DIR "${PROJECT_SOURCE_DIR}/credentials" CACHE PATH
    "Folder with the PEM files of the client's credentials")
  get_filename_component(folder "${VESK_CREDENTIALS_DIR}" ABSOLUTE
    BASE_DIR "${PROJECT_SOURCE_DIR}")
  vesk_check_credentials("${folder}")

  set(files)
  foreach(pair IN LISTS VESK_CREDENTIALS_MASKED)
    string(REGEX REPLACE "^.*=" "" name "${pair}")
    list(APPEND files "${folder}/${name}.pem")
  endforeach()
  # A file that changes is checked again, also one that only another platform masks.
  foreach(name IN LISTS VESK_CREDENTIALS_CERTIFICATES VESK_CREDENTIALS_KEYS)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${folder}/${name}.pem")
  endforeach()
  set(script "${PROJECT_SOURCE_DIR}/cmake/MaskCredentials.cmake")
  set(source "${CMAKE_CURRENT_BINARY_DIR}/MaskedCredentials.cpp")
  add_custom_command(OUTPUT "${source}"
    COMMAND ${CMAKE_COMMAND} "-DFOLDER=${folder}" "-DSOURCE=${source}"
      "-DPAIRS=${VESK_CREDENTIALS_MASKED}" -P "${script}"
    DEPENDS ${files} "${script}"
    COMMENT "Masking the credentials" VERBATIM)
  set(${variable} "${source}" PARENT_SCOPE)
endfunction()
