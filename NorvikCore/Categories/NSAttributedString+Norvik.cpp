#include "NorvikCore/Categories/NSAttributedString+Norvik.h"

#include "NorvikCore/platform/collections/NSArray.h"

#include <vector>

namespace norvik {
namespace {

class Building {
 public:
  Building(const Ref<NSDictionary>& attributes, const Ref<NSDictionary>& argumentAttributes)
      : attributes_(attributes), argumentAttributes_(argumentAttributes) {}

  void appendText(const NSString& text) { append(text, attributes_); }

  void appendArgument(const Value& argument) {
    if (const auto* pair = argument.object<NSArray>()) {
      const Value& value = pair->objectAtIndex(0);
      appendValue(value, pair->objectAtIndex(1).as<Ref<NSDictionary>>());
    } else {
      appendValue(argument, argumentAttributes_);
    }
  }

  void appendMissingArgument() { append("(bad argument)"_ns, argumentAttributes_); }

  [[nodiscard]] const Ref<NSMutableAttributedString>& text() const { return text_; }

 private:
  void appendValue(const Value& value, const Ref<NSDictionary>& attributes) {
    if (const auto* styled = value.object<NSAttributedString>()) {
      text_->appendAttributedString(*styled);
    } else {
      append(value.description(), attributes);
    }
  }

  void append(const NSString& text, const Ref<NSDictionary>& attributes) {
    text_->appendAttributedString(*NSAttributedString::attributedStringWithString(text, attributes));
  }

  const Ref<NSDictionary>&attributes_, &argumentAttributes_;
  Ref<NSMutableAttributedString> text_ = make<NSMutableAttributedString>();
};

}  // namespace

Ref<NSMutableAttributedString> nk_initWithFormat_attributes_argumentAttributes_arguments(
    const NSString& format, const Ref<NSDictionary>& attributes, const Ref<NSDictionary>& argumentAttributes,
    std::span<const Value> arguments) {
  Building building(attributes, argumentAttributes);
  // Each piece except the first follows a percent sign.
  const std::vector<NSString> pieces = format.componentsSeparatedBy("%"_ns);
  building.appendText(pieces.front());
  std::size_t used = 0;
  for (std::size_t i = 1; i < pieces.size(); ++i) {
    if (pieces[i].empty() && i + 1 < pieces.size()) {
      building.appendText("%"_ns);
      building.appendText(pieces[++i]);
    } else if (pieces[i].hasPrefix("@"_ns)) {
      if (used < arguments.size()) {
        building.appendArgument(arguments[used++]);
      } else {
        building.appendMissingArgument();
      }
      building.appendText(pieces[i].substringFromIndex(1));
    } else {
      building.appendText(pieces[i]);
    }
  }
  return building.text();
}

}  // namespace norvik
