#include "NorvikCore/platform/archives/internal/ArchiveWriter.h"

#include "NorvikCore/platform/archives/internal/CodedObject.h"
#include "NorvikCore/platform/collections/NSMutableArray.h"
#include "NorvikCore/platform/collections/NSMutableData.h"
#include "NorvikCore/platform/collections/NSMutableDictionary.h"
#include "NorvikCore/platform/collections/NSMutableSet.h"
#include "NorvikCore/platform/object/internal/SharedName.h"
#include "NorvikCore/platform/values/NSException.h"

#include <algorithm>
#include <bit>

namespace norvik::detail {
namespace {

void writeDouble(std::string& out, double value) {
  const auto bits = std::bit_cast<std::uint64_t>(value);
  for (int shift = 0; shift < 64; shift += 8) out += static_cast<char>(bits >> shift);
}

void writeDecimal(std::string& out, const Decimal& decimal) {
  const Decimal::Parts parts = decimal.parts();
  out += static_cast<char>((parts.isNegative ? 1 : 0) | (parts.isNaN ? 2 : 0));
  writeNumber(out, zigzag(parts.isNaN ? 0 : parts.exponent));
  writeNumber(out, parts.isNaN ? 0 : parts.mantissaHigh);
  writeNumber(out, parts.isNaN ? 0 : parts.mantissaLow);
}

template <class Mutable>
ArchiveKind kindOf(const NSObject& object, ArchiveKind immutableKind) {
  const bool isMutable = dynamic_cast<const Mutable*>(&object) != nullptr;
  return static_cast<ArchiveKind>(static_cast<int>(immutableKind) + (isMutable ? 1 : 0));
}

}  // namespace

void raiseArchive(const NSString& reason) { NSException::raise(NSInvalidArchiveOperationException, reason); }

void writeNumber(std::string& out, std::uint64_t number) {
  for (; number >= 0x80; number >>= 7) out += static_cast<char>(number | 0x80);
  out += static_cast<char>(number);
}

void writeCharacters(std::string& out, const NSString& text) {
  if (!text.empty() && text.isWellFormed()) {
    writeNumber(out, text.view().size());
    out += text.view();
    return;
  }
  const std::u16string units = text.toUtf16();
  writeNumber(out, 0);
  writeNumber(out, units.size());
  for (const char16_t unit : units) {
    out += static_cast<char>(unit & 0xFF);
    out += static_cast<char>(unit >> 8);
  }
}

ArchiveWriter::~ArchiveWriter() = default;

void ArchiveWriter::useKey(const NSString& key) {
  auto& keys = keys_.back();
  if (std::ranges::find(keys, key) != keys.end()) raiseArchive("the key \"" + key + "\" is used twice for one object");
  keys.push_back(key);
}

std::pair<std::uint64_t, bool> ArchiveWriter::number(const NSString& text) {
  const auto [entry, isNew] = numberOfText_.try_emplace(text, numberOfText_.size());
  return {entry->second, isNew};
}

std::pair<std::uint64_t, bool> ArchiveWriter::number(NSObject& object) {
  const auto [entry, isNew] = numberOfObject_.try_emplace(&object, objects_.size());
  if (isNew) objects_.push_back(ref(object));
  return {entry->second, isNew};
}

void ArchiveWriter::checkIsComplete() const {
  if (!isComplete_) raiseArchive("an object could not be encoded, or is still being encoded");
}

void ArchiveWriter::writeValue(std::string& out, const Value& value) {
  switch (value.kind()) {
    case Value::Kind::Absent:
      writeByte(out, ArchiveTag::Absent);
      break;
    case Value::Kind::Null:
      writeByte(out, ArchiveTag::Null);
      break;
    case Value::Kind::Boolean:
      writeByte(out, value.as<bool>() ? ArchiveTag::True : ArchiveTag::False);
      break;
    case Value::Kind::Integer:
      writeByte(out, ArchiveTag::Integer);
      writeNumber(out, zigzag(value.as<std::int64_t>()));
      break;
    case Value::Kind::Double:
      writeByte(out, ArchiveTag::Double);
      writeDouble(out, value.as<double>());
      break;
    case Value::Kind::Decimal:
      writeByte(out, ArchiveTag::Decimal);
      writeDecimal(out, *value.decimal());
      break;
    case Value::Kind::Date:
      writeByte(out, ArchiveTag::Date);
      writeDouble(out, value.date()->timeIntervalSinceReferenceDate());
      break;
    case Value::Kind::String:
      writeByte(out, ArchiveTag::Text);
      writeText(out, *value.string());
      break;
    case Value::Kind::Object:
      writeByte(out, ArchiveTag::Object);
      writeReference(out, *value.object());
      break;
  }
}

void ArchiveWriter::writeObject(std::string& out, const NSObject& object) {
  if (depth_ == greatestArchiveDepth) {
    raiseArchive("objects are nested more than " + std::to_string(depth_) + " deep");
  }
  ++depth_;
  isComplete_ = false;  // remains false if an exception leaves this function
  writeContent(out, object);
  isComplete_ = --depth_ == 0;
}

void ArchiveWriter::writeContent(std::string& out, const NSObject& object) {
  if (const auto* array = dynamic_cast<const NSArray*>(&object)) {
    writeElements(out, kindOf<NSMutableArray>(object, ArchiveKind::Array), *array);
  } else if (const auto* set = dynamic_cast<const NSSet*>(&object)) {
    writeElements(out, kindOf<NSMutableSet>(object, ArchiveKind::Set), *set);
  } else if (const auto* dictionary = dynamic_cast<const NSDictionary*>(&object)) {
    writeByte(out, kindOf<NSMutableDictionary>(object, ArchiveKind::Dictionary));
    writeNumber(out, dictionary->count());
    for (const auto& [key, value] : *dictionary) {
      writeValue(out, key);
      writeValue(out, value);
    }
  } else if (const auto* data = dynamic_cast<const NSData*>(&object)) {
    writeByte(out, kindOf<NSMutableData>(object, ArchiveKind::Data));
    writeNumber(out, data->length());
    out += data->text();
  } else {
    writeCodedObject(out, object);
  }
}

template <class Collection>
void ArchiveWriter::writeElements(std::string& out, ArchiveKind kind, const Collection& elements) {
  writeByte(out, kind);
  writeNumber(out, elements.count());
  for (const Value& element : elements) writeValue(out, element);
}

void ArchiveWriter::writeCodedObject(std::string& out, const NSObject& object) {
  const Class& theClass = object.classObject();
  const auto* coding = dynamic_cast<const NSCoding*>(&object);
  if (!coding || !decodingOperation(theClass)) {
    raiseArchive("an object of the class " + theClass.name() + ", which " +
                 (coding ? "does not declare NK_CODING" : "does not implement NSCoding"));
  }
  const NSString className = theClass.distinctName();
  if (theClass.sharesName() && Class::named(className) != &theClass) {
    raiseArchive("an object cannot be encoded: " + sharedNameProblem(className));
  }
  writeByte(out, ArchiveKind::Coded);
  writeText(out, className);
  keys_.emplace_back();
  writeCoded(out, *coding, coder_);
  keys_.pop_back();
}

}  // namespace norvik::detail
