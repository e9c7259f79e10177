# cmake -DFOLDER=... -P CheckCredentials.cmake
#
# Says whether a folder holds a whole set of credentials, without configuring a build.
include("${CMAKE_CURRENT_LIST_DIR}/VeskCredentials.cmake")
vesk_check_credentials("${FOLDER}")
