// NorvikCore/platform/foundation/internal/SharedLibrary.h - a library that is loaded when its first function is needed.
//
//   const SharedLibrary library("liburiparser.so.1", "addresses cannot be read without uriparser");
//   library.find("uriFreeUriMembersA", functions->uriFreeUriMembersA);
//
// A program that never needs it starts without it and without the libraries that it needs itself. It stays loaded.
#pragma once

namespace norvik::detail {

class SharedLibrary {
 public:
  /// `purpose` begins the reason of the NSGenericException that is raised if the library cannot be loaded.
  SharedLibrary(const char* name, const char* purpose);

  /// Raises NSGenericException where the library, and those that it needs, have no such function.
  template <class Function>
  void find(const char* name, Function*& function) const {
    function = reinterpret_cast<Function*>(address(name));  // NOLINT(performance-no-int-to-ptr): what dlsym() is for
  }

 private:
  [[nodiscard]] void* address(const char* name) const;

  const char* name_;
  const char* purpose_;
  void* library_;
};

}  // namespace norvik::detail
