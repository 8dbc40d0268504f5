// NorvikCore/platform/foundation/internal/SharedLibrary.h - a library that is loaded when it is first needed.
//
//   const SharedLibrary library("liburiparser.so.1", "URLs cannot be read without uriparser");
//   library.find("uriFreeUriMembersA", functions->uriFreeUriMembersA);
//
// A program that never needs the library starts without it and without its dependencies. It stays loaded.
#pragma once

namespace norvik::detail {

class SharedLibrary {
 public:
  /// `purpose` begins the reason of the NSGenericException that is raised if the library cannot be loaded.
  SharedLibrary(const char* name, const char* purpose);

  /// Raises NSGenericException if neither the library nor its dependencies have such a function.
  template <class Function>
  void find(const char* name, Function*& function) const {
    function = reinterpret_cast<Function*>(address(name));  // NOLINT(performance-no-int-to-ptr): the use of dlsym()
  }

 private:
  [[nodiscard]] void* address(const char* name) const;

  const char* name_;
  const char* purpose_;
  void* library_;
};

}  // namespace norvik::detail
