// The functions of libcurl that the command line calls itself, for its questions to servers and for
// addresses. With the forty libraries that it needs, libcurl takes as long to load as all else that
// a short command does before it begins, and most commands call none of them: so it is loaded by
// the first call of any. (What downloads is a plug-in, which brings libcurl along.)

#include <curl/curl.h>
#include <dlfcn.h>
#include <unistd.h>

#include <array>
#include <cstdarg>
#include <iostream>

// In the header these are macros that check the types of their arguments.
#undef curl_easy_getinfo
#undef curl_easy_setopt

// The header has the arguments of these two follow an enumeration, which is as wide as an int.
#pragma GCC diagnostic ignored "-Wvarargs"

namespace {

/// The status of a program that the system cannot start for lack of a library.
constexpr int kLibraryIsMissing = 127;

template <class Function>
Function* find(void* library, const char* name) {
  void* const found = library != nullptr ? ::dlsym(library, name) : nullptr;
  if (found != nullptr) return reinterpret_cast<Function*>(found);
  std::cerr << "playerx-cli: libcurl cannot be loaded: " << ::dlerror() << std::endl;
  ::_exit(kLibraryIsMissing);
}

/// Stays loaded: it may leave a thread behind that still waits for a name server.
void* loadLibrary() {
  void* const library = ::dlopen("libcurl.so.4", RTLD_NOW | RTLD_LOCAL);
  find<decltype(curl_global_init)>(library, "curl_global_init")(CURL_GLOBAL_DEFAULT);
  return library;
}

template <class Function>
Function* find(const char* name) {
  static void* const library = loadLibrary();
  return find<Function>(library, name);
}

}  // namespace

// Passes a call on to the library's function of the same name.
#define CALL(name, ...)                                  \
  static auto* const real = find<decltype(name)>(#name); \
  return real(__VA_ARGS__)

extern "C" {

CURL* curl_easy_init() { CALL(curl_easy_init, ); }

void curl_easy_cleanup(CURL* curl) { CALL(curl_easy_cleanup, curl); }

/// The argument is a pointer, whatever the value is.
CURLcode curl_easy_getinfo(CURL* curl, CURLINFO info, ...) {
  va_list arguments;
  va_start(arguments, info);
  void* const value = va_arg(arguments, void*);
  va_end(arguments);
  CALL(curl_easy_getinfo, curl, info, value);
}

/// An option's number shows the type of its argument.
CURLcode curl_easy_setopt(CURL* curl, CURLoption option, ...) {
  static auto* const real = find<decltype(curl_easy_setopt)>("curl_easy_setopt");
  va_list arguments;
  va_start(arguments, option);
  CURLcode code = CURLE_OK;
  if (option < CURLOPTTYPE_OBJECTPOINT) {
    code = real(curl, option, va_arg(arguments, long));
  } else if (option < CURLOPTTYPE_FUNCTIONPOINT || option >= CURLOPTTYPE_BLOB) {
    code = real(curl, option, va_arg(arguments, void*));
  } else if (option < CURLOPTTYPE_OFF_T) {
    code = real(curl, option, va_arg(arguments, void (*)()));
  } else {
    code = real(curl, option, va_arg(arguments, curl_off_t));
  }
  va_end(arguments);
  return code;
}

const char* curl_easy_strerror(CURLcode code) { CALL(curl_easy_strerror, code); }

char* curl_easy_unescape(CURL* curl, const char* text, int length, int* unescaped) {
  CALL(curl_easy_unescape, curl, text, length, unescaped);
}

void curl_free(void* memory) { CALL(curl_free, memory); }

CURLM* curl_multi_init() { CALL(curl_multi_init, ); }

CURLMcode curl_multi_cleanup(CURLM* multi) { CALL(curl_multi_cleanup, multi); }

CURLMcode curl_multi_add_handle(CURLM* multi, CURL* curl) {
  CALL(curl_multi_add_handle, multi, curl);
}

CURLMcode curl_multi_remove_handle(CURLM* multi, CURL* curl) {
  CALL(curl_multi_remove_handle, multi, curl);
}

CURLMcode curl_multi_perform(CURLM* multi, int* running) {
  CALL(curl_multi_perform, multi, running);
}

CURLMcode curl_multi_poll(CURLM* multi, curl_waitfd* files, unsigned int count, int milliseconds,
                          int* ready) {
  CALL(curl_multi_poll, multi, files, count, milliseconds, ready);
}

CURLMsg* curl_multi_info_read(CURLM* multi, int* left) { CALL(curl_multi_info_read, multi, left); }

CURLU* curl_url() { CALL(curl_url, ); }

void curl_url_cleanup(CURLU* url) { CALL(curl_url_cleanup, url); }

CURLUcode curl_url_get(CURLU* url, CURLUPart part, char** text, unsigned int flags) {
  CALL(curl_url_get, url, part, text, flags);
}

CURLUcode curl_url_set(CURLU* url, CURLUPart part, const char* text, unsigned int flags) {
  CALL(curl_url_set, url, part, text, flags);
}
}
