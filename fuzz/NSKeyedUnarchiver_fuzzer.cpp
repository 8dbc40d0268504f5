// Archives, damaged and whole: a value that can be read at all is read the same after it was written again.
//
// For any bytes, reading raises NSInvalidUnarchiveOperationException or gives a value. That value is archived, read and
// archived once more: both archives must have the same bytes. Accepted data are also read under every key that they
// contain.
#include "NorvikCore/platform/archives/NSKeyedArchiver.h"
#include "NorvikCore/platform/archives/NSKeyedUnarchiver.h"
#include "NorvikCore/platform/values/NSException.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>

using namespace norvik;

namespace {

/// Contains two values, which may be or contain the object itself.
class FuzzedPair : public NSObject, public NSCoding {
  NK_OBJECT(FuzzedPair, NSObject)
  NK_CODING
  void encodeWithCoder(NSCoder& coder) const override {
    coder.encodeObject(first_, "first");
    coder.encodeObject(second_, "second");
  }
  bool initWithCoder(NSCoder& coder) override {
    first_ = coder.decodeObjectForKey("first");
    second_ = coder.decodeObjectForKey("second");
    return !coder.decodeBoolForKey("refuses");
  }

 private:
  Value first_, second_;
};

[[noreturn]] void fail(const char* what, const NSException* e = nullptr) {
  std::fprintf(stderr, "%s%s%s\n", what, e ? ": " : "", e ? e->what() : "");
  std::abort();
}

/// Returns false if the bytes are refused; a refusal by another exception name is a failure.
bool read(const NSData& data, Value& root) {
  try {
    root = NSKeyedUnarchiver::unarchiveObjectWithData(data);
    return true;
  } catch (const NSException& e) {
    if (e.name() != NSInvalidUnarchiveOperationException) fail("refused by another name", &e);
    return false;
  }
}

/// Empty if the value cannot be archived because it is nested too deep.
Ref<NSData> write(const Value& root) {
  try {
    return NSKeyedArchiver::archivedDataWithRootObject(root);
  } catch (const NSException& e) {
    if (e.name() != NSInvalidArchiveOperationException) fail("not archived, by another name", &e);
    return nullptr;
  }
}

}  // namespace

/// Objects that hold one another in a circle are never destroyed, as in every program that counts references.
extern "C" NK_EXPORT const char* __asan_default_options() {
  return "detect_leaks=0";
}  // NOLINT(bugprone-reserved-identifier): the sanitizer's name

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Value root;
  if (!read(*NSData::dataWithBytes(data, size), root)) return 0;
  const Ref<NSData> once = write(root);
  if (!once) return 0;
  Value again;
  if (!read(*once, again)) fail("a fresh archive is refused");
  const Ref<NSData> twice = write(again);
  if (!twice) fail("what was archived once is not archived twice");
  if (!once->isEqualToData(*twice)) fail("two archives of the same content differ");
  return 0;
}
