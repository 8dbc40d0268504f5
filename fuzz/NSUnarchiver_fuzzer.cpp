// Sequential archives, damaged and whole: a value that can be read at all is read the same after either archiver has
// written it again.
//
// For any bytes, reading raises NSInvalidUnarchiveOperationException or gives a value. That value is archived, read and
// archived once more: both archives must have the same bytes. It is also passed through the keyed archiver, and the
// sequential archive of the result must have these bytes too.
#include "NorvikCore/platform/archives/NSArchiver.h"
#include "NorvikCore/platform/archives/NSKeyedArchiver.h"
#include "NorvikCore/platform/archives/NSKeyedUnarchiver.h"
#include "NorvikCore/platform/archives/NSUnarchiver.h"
#include "NorvikCore/platform/values/NSException.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>

using namespace norvik;

namespace {

/// Contains values by order and by key, which may be or contain the object itself.
class FuzzedChain : public NSObject, public NSCoding {
  NK_OBJECT(FuzzedChain, NSObject)
  NK_CODING
  void encodeWithCoder(NSCoder& coder) const override {
    coder.encodeObject(first_);
    coder.encodeObject(named_, "named");
    coder.encodeObject(second_);
  }
  bool initWithCoder(NSCoder& coder) override {
    named_ = coder.decodeObjectForKey("named");
    first_ = coder.decodeObject();
    second_ = coder.decodeObject();
    return !coder.decodeBoolForKey("refuses");
  }

 private:
  Value first_, named_, second_;
};

/// Created in one step from its content, so that it cannot be part of its content.
class FuzzedWhole : public NSObject, public NSCoding {
  NK_OBJECT(FuzzedWhole, NSObject)
  NK_DECODED_BY(wholeWithCoder)
  void encodeWithCoder(NSCoder& coder) const override { coder.encodeObject(held_); }
  static Ref<FuzzedWhole> wholeWithCoder(NSCoder& coder) {
    auto made = make<FuzzedWhole>();
    made->held_ = coder.decodeObject();
    return made;
  }

 private:
  Value held_;
};

[[noreturn]] void fail(const char* what, const NSException* e = nullptr) {
  std::fprintf(stderr, "%s%s%s\n", what, e ? ": " : "", e ? e->what() : "");
  std::abort();
}

/// Returns false if the bytes are refused; a refusal by another exception name is a failure.
bool read(Value (*unarchive)(const NSData&), const NSData& data, Value& root) {
  try {
    root = unarchive(data);
    return true;
  } catch (const NSException& e) {
    if (e.name() != NSInvalidUnarchiveOperationException) fail("refused by another name", &e);
    return false;
  }
}

/// Empty if the value cannot be archived because it is nested too deep.
Ref<NSData> write(Ref<NSData> (*archive)(const Value&), const Value& root) {
  try {
    return archive(root);
  } catch (const NSException& e) {
    if (e.name() != NSInvalidArchiveOperationException) fail("not archived, by another name", &e);
    return nullptr;
  }
}

}  // namespace

/// Objects that hold one another in a circle are never destroyed, as in every program that counts references.
extern "C" NK_EXPORT const char* __asan_default_options() {
  return "detect_leaks=0";
}  // NOLINT(bugprone-reserved-identifier)

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Value root;
  if (!read(&NSUnarchiver::unarchiveObjectWithData, *NSData::dataWithBytes(data, size), root)) return 0;
  const Ref<NSData> once = write(&NSArchiver::archivedDataWithRootObject, root);
  if (!once) return 0;
  Value again;
  if (!read(&NSUnarchiver::unarchiveObjectWithData, *once, again)) fail("a fresh archive is refused");
  const Ref<NSData> twice = write(&NSArchiver::archivedDataWithRootObject, again);
  if (!twice) fail("what was archived once is not archived twice");
  if (!once->isEqualToData(*twice)) fail("two archives of the same content differ");

  const Ref<NSData> keyed = write(&NSKeyedArchiver::archivedDataWithRootObject, root);
  if (!keyed) fail("what can be archived in order cannot be by keys");
  Value byKeys;
  if (!read(&NSKeyedUnarchiver::unarchiveObjectWithData, *keyed, byKeys)) fail("a fresh keyed archive is refused");
  const Ref<NSData> thrice = write(&NSArchiver::archivedDataWithRootObject, byKeys);
  if (!thrice || !once->isEqualToData(*thrice)) fail("the keyed archive holds something else");
  return 0;
}
