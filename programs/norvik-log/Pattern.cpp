#include "Pattern.h"

#include <utility>

#define PCRE2_CODE_UNIT_WIDTH 8
#include <pcre2.h>

namespace norvik_log {
namespace {

/// Reads a pattern from its start and keeps the longest text that is outside groups and alternatives.
class TraitsReader {
 public:
  explicit TraitsReader(std::string_view pattern) : pattern_(pattern) {}

  PatternTraits read() {
    PatternTraits known;
    known.matchesInPlace = true;
    known.needsCharacters = false;
    traits_ = known;
    while (at_ < pattern_.size()) {
      if (!readNext()) return {};
    }
    endRun();
    if (hasAlternatives_) traits_.literal.clear();
    return traits_;
  }

 private:
  /// False at a construct that the reader does not understand.
  bool readNext() {
    const char c = pattern_[at_++];
    switch (c) {
      case '\\':
        return readEscape();
      case '[':
        endRun();
        return readSet();
      case '(':
        endRun();
        if (rest().starts_with("?:")) {
          at_ += 2;
        } else if (rest().starts_with("?") || rest().starts_with("*")) {
          return false;
        }
        ++depth_;
        return true;
      case ')':
        endRun();
        --depth_;
        return depth_ >= 0;
      case '|':
        endRun();
        hasAlternatives_ |= depth_ == 0;
        return true;
      case '^':
      case '$':
        endRun();
        traits_.matchesInPlace = false;
        return true;
      case '.':
        endRun();
        traits_.needsCharacters = true;
        return true;
      case '*':
      case '?':
      case '+':
      case '{':
        return readRepetition(c);
      default:
        addCharacter(c);
        return true;
    }
  }

  bool readEscape() {
    if (at_ == pattern_.size()) return false;
    const char c = pattern_[at_++];
    switch (c) {
      case 'D':
      case 'W':
      case 'S':
        traits_.needsCharacters = true;
        [[fallthrough]];
      case 'd':
      case 'w':
      case 's':
      case 'b':
      case 'B':
        endRun();
        return true;
      default:
        break;
    }
    const bool isWordCharacter = (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                                 static_cast<unsigned char>(c) >= 0x80;
    if (isWordCharacter) return false;
    addCharacter(c);
    return true;
  }

  bool readSet() {
    if (rest().starts_with("^")) {
      traits_.needsCharacters = true;
      ++at_;
    }
    if (rest().starts_with("]")) ++at_;
    while (at_ < pattern_.size()) {
      const char c = pattern_[at_++];
      if (c == ']') return true;
      if (c == '[' && (rest().starts_with(":") || rest().starts_with(".") || rest().starts_with("="))) return false;
      if (c == '\\') {
        if (at_ == pattern_.size()) return false;
        const char escaped = pattern_[at_++];
        if (escaped != 'd' && escaped != 'w' && escaped != 's' && escaped != '\\' && escaped != ']' && escaped != '[' &&
            escaped != '-' && escaped != '.') {
          return false;
        }
      }
      traits_.needsCharacters |= static_cast<unsigned char>(c) >= 0x80;
    }
    return false;
  }

  bool readRepetition(char c) {
    if (c == '+') {
      endRun();
    } else {
      run_.resize(lastCharacter_);
      endRun();
    }
    if (c == '{') {
      const std::size_t close = pattern_.find('}', at_);
      if (close == pattern_.npos) return false;
      at_ = close + 1;
    }
    if (rest().starts_with("+")) return false;  // possessive: takes what follows and does not give it back
    if (rest().starts_with("?")) ++at_;
    return true;
  }

  void addCharacter(char c) {
    const auto byte = static_cast<unsigned char>(c);
    traits_.needsCharacters |= byte >= 0x80;
    if ((byte & 0xc0) != 0x80) lastCharacter_ = run_.size();
    run_ += c;
  }

  void endRun() {
    if (depth_ == 0 && run_.size() > traits_.literal.size()) traits_.literal = run_;
    run_.clear();
    lastCharacter_ = 0;
  }

  [[nodiscard]] std::string_view rest() const { return pattern_.substr(at_); }

  const std::string_view pattern_;
  std::size_t at_ = 0;
  int depth_ = 0;
  bool hasAlternatives_ = false;
  std::string run_;
  std::size_t lastCharacter_ = 0;  // the start of the run's last character
  PatternTraits traits_;
};

}  // namespace

PatternTraits traitsOf(std::string_view pattern) { return TraitsReader(pattern).read(); }

struct Pattern::Code {
  pcre2_code* code = nullptr;
  Code() = default;
  Code(const Code&) = delete;
  Code& operator=(const Code&) = delete;
  ~Code() { pcre2_code_free(code); }
};

Pattern::Pattern(const std::string& pattern, Kind kind, bool ignoresCase) : code_(std::make_unique<Code>()) {
  if (kind == Kind::Regular) traits_ = traitsOf(pattern);
  if (kind == Kind::Literal) traits_.matchesInPlace = true;
  if (ignoresCase) traits_.literal.clear();
  const bool isAscii = pattern.find_first_not_of(
                           "\t !\"#$%&'()*+,-./0123456789:;<=>?@ABCDEFGHIJKLMNOPQRSTUVWXYZ[\\]^_`abcdefghijklmnopqrstu"
                           "vwxyz{|}~") == pattern.npos;
  std::uint32_t options = 0;
  if (kind == Kind::Literal) {
    options |= PCRE2_LITERAL;
  } else {
    options |= PCRE2_MULTILINE | PCRE2_NEVER_BACKSLASH_C;
  }
  if (ignoresCase) options |= PCRE2_CASELESS;
  if (traits_.needsCharacters || ignoresCase || !isAscii) options |= PCRE2_UTF | PCRE2_MATCH_INVALID_UTF;
  const std::unique_ptr<pcre2_compile_context, decltype(&pcre2_compile_context_free)> context(
      pcre2_compile_context_create(nullptr), pcre2_compile_context_free);
  if (!context) throw std::bad_alloc();
  pcre2_set_newline(context.get(), PCRE2_NEWLINE_LF);
  int error = 0;
  std::size_t place = 0;
  code_->code = pcre2_compile(reinterpret_cast<PCRE2_SPTR>(pattern.data()), pattern.size(), options, &error, &place,
                              context.get());
  if (code_->code == nullptr) {
    if (kind == Kind::Literal) throw PatternError("\"" + pattern + "\" is not UTF-8, which --ignore-case needs");
    PCRE2_UCHAR text[256];
    pcre2_get_error_message(error, text, sizeof text);
    throw PatternError("\"" + pattern + "\" is not a regular expression: " + reinterpret_cast<const char*>(text) +
                       ", at character " + std::to_string(place + 1));
  }
  // If the machine has no memory for compiled patterns, or forbids them, patterns are interpreted.
  pcre2_jit_compile(code_->code, PCRE2_JIT_COMPLETE);
}

Pattern::~Pattern() = default;

struct Pattern::Matcher::State {
  template <class T, void (*release)(T*)>
  using Held = std::unique_ptr<T, decltype([](T* held) { release(held); })>;

  const pcre2_code* code = nullptr;
  Held<pcre2_match_data, pcre2_match_data_free> data;
  Held<pcre2_match_context, pcre2_match_context_free> context;
  Held<pcre2_jit_stack, pcre2_jit_stack_free> stack;
  std::size_t givenUp = 0;
};

Pattern::Matcher::Matcher(const Pattern& pattern) : state_(std::make_unique<State>()) {
  constexpr std::size_t smallStack = 32 << 10, largeStack = 1 << 20;
  constexpr std::uint32_t steps = 10'000'000;  // the limit of one search: about a second
  state_->code = pattern.code_->code;
  state_->data.reset(pcre2_match_data_create_from_pattern(state_->code, nullptr));
  state_->context.reset(pcre2_match_context_create(nullptr));
  state_->stack.reset(pcre2_jit_stack_create(smallStack, largeStack, nullptr));
  if (!state_->data || !state_->context || !state_->stack) throw std::bad_alloc();
  pcre2_set_match_limit(state_->context.get(), steps);
  pcre2_jit_stack_assign(state_->context.get(), nullptr, state_->stack.get());
}

Pattern::Matcher::~Matcher() = default;

std::optional<std::size_t> Pattern::Matcher::find(std::string_view text, std::size_t from) {
  const int result = pcre2_match(state_->code, reinterpret_cast<PCRE2_SPTR>(text.data()), text.size(), from, 0,
                                 state_->data.get(), state_->context.get());
  if (result >= 0) return pcre2_get_ovector_pointer(state_->data.get())[0];
  return result == PCRE2_ERROR_NOMATCH ? std::optional(std::string_view::npos) : std::nullopt;
}

bool Pattern::Matcher::matches(std::string_view text) {
  const std::optional<std::size_t> place = find(text, 0);
  if (!place) ++state_->givenUp;
  return place && *place != text.npos;
}

std::size_t Pattern::Matcher::takeGivenUp() { return std::exchange(state_->givenUp, 0); }

}  // namespace norvik_log
