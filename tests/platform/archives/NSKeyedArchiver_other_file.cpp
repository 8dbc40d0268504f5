// tests/platform/archives/NSKeyedArchiver_other_file.cpp - a class with the same C++ name as one in
// NSKeyedArchiver_test.cpp.
#include "NorvikCore/platform/object/NSCoder.h"

namespace norvik {
namespace {

class CodedHidden : public NSObject, public NSCoding {
  NK_OBJECT(CodedHidden, NSObject)
  NK_CODING
  void encodeWithCoder(NSCoder&) const override {}
  bool initWithCoder(NSCoder&) override { return true; }
};

}  // namespace
}  // namespace norvik
