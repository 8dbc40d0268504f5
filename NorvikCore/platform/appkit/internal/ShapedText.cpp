#include "NorvikCore/platform/appkit/internal/ShapedText.h"

#include "NorvikCore/platform/values/NSException.h"
#include "NorvikCore/platform/values/Utf8.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <limits>

namespace norvik::detail {
namespace {

constexpr std::size_t mostSets = 16;        // the number of threads that can measure and draw at once
constexpr std::size_t mostFonts = 64;       // per set
constexpr std::size_t mostWords = 1 << 13;  // per font
constexpr std::size_t tableSize = 4 * mostWords;
constexpr std::size_t mostBytes = std::size_t{1} << 20;  // of words per font
constexpr std::int64_t blanksOfATab = 8;

constexpr double greatestSize = 10'000;  // points

// Sizes are in points and not rounded to pixels, so that they are the same wherever the text is drawn.
PangoOwned<PangoContext> makeContext() {
  const PangoLibrary& pango = pangoLibrary();
  const PangoOwned<PangoFontMap> fonts(pango.pango_cairo_font_map_new());
  PangoOwned<PangoContext> context(pango.pango_font_map_create_context(fonts.get()));
  pango.pango_cairo_context_set_resolution(context.get(), 72);
  cairo_font_options_t* const options = pango.cairo_font_options_create();
  pango.cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_NONE);
  pango.cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_OFF);
  pango.cairo_font_options_set_antialias(options, CAIRO_ANTIALIAS_GRAY);
  pango.pango_cairo_context_set_font_options(context.get(), options);
  pango.cairo_font_options_destroy(options);
  pango.pango_context_set_round_glyph_positions(context.get(), FALSE);
  return context;
}

// True for one run whose glyphs follow the text from left to right, each with an outline. Text with Hebrew or any later
// script of Unicode is laid out by Pango, because some of these scripts run from right to left.
bool isPlainRun(std::string_view text, const PangoLayoutLine& line) {
  const bool isLeftToRight = std::none_of(text.begin(), text.end(), [](char byte) {
    return static_cast<unsigned char>(byte) >= 0xD6;  // U+0580 and above
  });
  if (!isLeftToRight || !line.runs || line.runs->next) return false;
  const PangoLayoutRun& run = *static_cast<const PangoLayoutRun*>(line.runs->data);
  const PangoGlyphString& glyphs = *run.glyphs;
  for (int i = 0; i < glyphs.num_glyphs; ++i) {
    if (glyphs.glyphs[i].glyph & PANGO_GLYPH_UNKNOWN_FLAG) return false;
    if (i > 0 && glyphs.log_clusters[i] < glyphs.log_clusters[i - 1]) return false;
  }
  return glyphs.num_glyphs > 0;
}

GlyphRun glyphRun(std::string_view text, const PangoGlyphString& glyphs, cairo_scaled_font_t* font) {
  GlyphRun run;
  run.font = font;
  double x = 0;
  for (int i = 0; i < glyphs.num_glyphs; ++i) {
    const PangoGlyphInfo& info = glyphs.glyphs[i];
    const bool isNewCluster = i == 0 || glyphs.log_clusters[i] != glyphs.log_clusters[i - 1];
    if (isNewCluster) {
      int next = i + 1;
      while (next < glyphs.num_glyphs && glyphs.log_clusters[next] == glyphs.log_clusters[i]) ++next;
      const int end = next < glyphs.num_glyphs ? glyphs.log_clusters[next] : static_cast<int>(text.size());
      run.clusters.push_back({end - glyphs.log_clusters[i], 0});
    }
    if (info.glyph != PANGO_GLYPH_EMPTY) {
      run.glyphs.push_back(
          {info.glyph, x + info.geometry.x_offset / double{PANGO_SCALE}, info.geometry.y_offset / double{PANGO_SCALE}});
      ++run.clusters.back().num_glyphs;
    }
    x += info.geometry.width / double{PANGO_SCALE};
  }
  return run;
}

template <class Number>
std::uint64_t loaded(const char* from) noexcept {
  Number number;
  std::memcpy(&number, from, sizeof number);
  return number;
}

// Optimised for short words: overlapping loads and a few multiplications, without a call.
std::size_t hashOf(std::string_view text) noexcept {
  constexpr std::uint64_t factor = 0x9E37'79B9'7F4A'7C15;
  const char* const bytes = text.data();
  const std::size_t size = text.size();
  std::uint64_t hash = size * factor;
  const auto mix = [&](std::uint64_t part) {
    hash = (hash ^ part) * factor;
    hash ^= hash >> 32;
  };
  if (size >= 8) {
    for (std::size_t at = 0; at + 8 < size; at += 8) mix(loaded<std::uint64_t>(bytes + at));
    mix(loaded<std::uint64_t>(bytes + size - 8));
  } else if (size >= 4) {
    mix(loaded<std::uint32_t>(bytes) << 32 | loaded<std::uint32_t>(bytes + size - 4));
  } else if (size > 0) {
    mix(loaded<std::uint8_t>(bytes) << 16 | loaded<std::uint8_t>(bytes + size / 2) << 8 |
        loaded<std::uint8_t>(bytes + size - 1));
  }
  return hash;
}

constexpr bool isNoncharacter(char32_t point) {
  return (point & 0xFFFE) == 0xFFFE || (0xFDD0 <= point && point <= 0xFDEF);
}

bool areAlike(const NSFont& a, const NSFont& b) noexcept {
  return a.pointSize() == b.pointSize() && a.isBold() == b.isBold() && a.isItalic() == b.isItalic() &&
         a.familyName() == b.familyName();
}

}  // namespace

bool isDrawable(const NSString& text) {
  if (!text.isWellFormed() || text.view().find('\0') != std::string_view::npos) return false;
  if (text.isAscii()) return true;
  const std::string_view bytes = text.view();
  for (std::size_t at = 0; at < bytes.size();) {
    const utf8::Character character = utf8::decode(bytes.data() + at);
    if (isNoncharacter(character.point)) return false;
    at += character.size;
  }
  return true;
}

std::string drawableText(const NSString& text) {
  if (isDrawable(text)) return text.str();
  const std::string whole = text.utf8();
  std::string drawable;
  drawable.reserve(whole.size());
  for (std::size_t at = 0; at < whole.size();) {
    const utf8::Character character = utf8::decode(whole.data() + at);
    if (character.point == 0 || isNoncharacter(character.point)) {
      drawable += "\uFFFD";
    } else {
      drawable.append(whole, at, character.size);
    }
    at += character.size;
  }
  return drawable;
}

OwnedDescription describe(const NSFont& font) {
  const PangoLibrary& pango = pangoLibrary();
  OwnedDescription description(pango.pango_font_description_new());
  PangoFontDescription* const described = description.get();
  pango.pango_font_description_set_family(described, drawableText(font.familyName()).c_str());
  pango.pango_font_description_set_weight(described, font.isBold() ? PANGO_WEIGHT_BOLD : PANGO_WEIGHT_NORMAL);
  pango.pango_font_description_set_style(described, font.isItalic() ? PANGO_STYLE_ITALIC : PANGO_STYLE_NORMAL);
  pango.pango_font_description_set_absolute_size(described, std::min(font.pointSize(), greatestSize) * PANGO_SCALE);
  return description;
}

std::int64_t widthOf(const PangoLayoutLine& line) {
  std::int64_t width = 0;
  for (const GSList* run = line.runs; run; run = run->next) {
    const PangoGlyphString& glyphs = *static_cast<const PangoLayoutRun*>(run->data)->glyphs;
    for (int i = 0; i < glyphs.num_glyphs; ++i) width += glyphs.glyphs[i].geometry.width;
  }
  return width;
}

int pangoLength(std::string_view text) {
  if (text.size() > static_cast<std::size_t>(std::numeric_limits<int>::max())) {
    NSException::raise(NSInvalidArgumentException, "a text of 2 GiB or more can be neither measured nor drawn");
  }
  return static_cast<int>(text.size());
}

void settle(PangoContext* context, const PangoFontDescription& description, PangoLanguage* language) {
  const PangoLibrary& pango = pangoLibrary();
  const PangoOwned<PangoFontset> ranked(
      pango.pango_font_map_load_fontset(pango.pango_context_get_font_map(context), context, &description, language));
  int seen = 0;
  const auto isSecond = [](PangoFontset*, PangoFont*, gpointer count) -> gboolean {
    return ++*static_cast<int*>(count) == 2;  // because the first font is found without ranking the others
  };
  pango.pango_fontset_foreach(ranked.get(), isSecond, &seen);
}

KeptFont::KeptFont(const NSFont& font, PangoContext* context)
    : font_(make<NSFont>(font.familyName(), font.pointSize(), font.isBold(), font.isItalic())),
      context_(context),
      description_(describe(font)),
      layout_(pangoLibrary().pango_layout_new(context)) {
  const PangoLibrary& pango = pangoLibrary();
  pango.pango_layout_set_font_description(layout_.get(), description_.get());
  pango.pango_layout_set_text(layout_.get(), " ", 1);
  const GSList* const run = pango.pango_layout_get_line_readonly(layout_.get(), 0)->runs;
  if (!run || !static_cast<const PangoLayoutRun*>(run->data)->item->analysis.font) {
    NSException::raise(NSGenericException, "text cannot be measured or drawn without a font: fontconfig finds none");
  }
  blank_ = shape(" ");
  blankWidth_ = blank_.width;
  int height = 0;
  pango.pango_layout_get_size(layout_.get(), nullptr, &height);
  ascent_ = pango.pango_layout_get_baseline(layout_.get());
  height_ = height;
}

ShapedWord KeptFont::shape(std::string_view text) {
  const PangoLibrary& pango = pangoLibrary();
  pango.pango_layout_set_text(layout_.get(), text.data(), pangoLength(text));
  const PangoLayoutLine* const line = pango.pango_layout_get_line_readonly(layout_.get(), 0);
  for (const GSList* run = line->runs; run; run = run->next) {
    settle(context_, *description_, static_cast<const PangoLayoutRun*>(run->data)->item->analysis.language);
  }
  ShapedWord shaped;
  shaped.text = text;
  shaped.width = norvik::detail::widthOf(*line);
  if (isPlainRun(text, *line)) {
    const auto* const run = static_cast<const PangoLayoutRun*>(line->runs->data);
    cairo_scaled_font_t* const font =
        pango.pango_cairo_font_get_scaled_font(reinterpret_cast<PangoCairoFont*>(run->item->analysis.font));  // NOLINT
    if (font) {
      if (std::find_if(scaledFonts_.begin(), scaledFonts_.end(),
                       [&](const OwnedScaledFont& kept) { return kept.get() == font; }) == scaledFonts_.end()) {
        scaledFonts_.emplace_back(OwnedScaledFont(pango.cairo_scaled_font_reference(font)));
      }
      shaped.run = glyphRun(text, *run->glyphs, font);
      shaped.isPlain = true;
    }
  }
  return shaped;
}

void KeptFont::forget() {
  words_.clear();
  table_.assign(tableSize, 0);
  bytes_ = 0;
}

const ShapedWord& KeptFont::word(std::string_view text) {
  if (words_.size() == mostWords || bytes_ > mostBytes || table_.empty()) forget();
  const std::size_t hash = hashOf(text);
  std::size_t slot = hash % tableSize;
  for (; table_[slot] != 0; slot = (slot + 1) % tableSize) {
    const ShapedWord& known = words_[table_[slot] - 1];
    if (known.hash == hash && known.text == text) return known;
  }
  words_.push_back(shape(text));
  words_.back().hash = hash;
  table_[slot] = static_cast<std::uint32_t>(words_.size());
  bytes_ += text.size() + words_.back().run.glyphs.size() * sizeof(cairo_glyph_t);
  return words_.back();
}

std::int64_t KeptFont::widthOf(std::string_view line, std::int64_t from) {
  std::int64_t width = 0;
  for (std::size_t at = 0; at < line.size();) {
    if (line[at] == ' ') {
      width += blankWidth_;
      ++at;
    } else if (line[at] == '\t') {
      const std::int64_t stop = std::max<std::int64_t>(1, blankWidth_ * blanksOfATab);
      width = ((from + width) / stop + 1) * stop - from;
      ++at;
    } else {
      std::size_t end = at + 1;
      while (end < line.size() && line[end] != ' ' && line[end] != '\t') ++end;
      width += word(line.substr(at, end - at)).width;
      at = end;
    }
  }
  return width;
}

// A first font is loaded at once, because Pango's thread reads the list of fonts only then.
FontSet::FontSet() : context_(makeContext()) {
  static_cast<void>(fontFor(*make<NSFont>("Sans", NSFont::systemFontSize())));
}

KeptFont& FontSet::fontFor(const NSFont& font) {
  if (last_ && areAlike(last_->font(), font)) return *last_;
  const auto known =
      std::find_if(fonts_.begin(), fonts_.end(), [&](const auto& kept) { return areAlike(kept->font(), font); });
  last_ = nullptr;
  if (known == fonts_.end()) {
    if (fonts_.size() == mostFonts) fonts_.erase(fonts_.begin());
    fonts_.push_back(std::make_unique<KeptFont>(font, context_.get()));
    last_ = fonts_.back().get();
  } else {
    last_ = known->get();
  }
  return *last_;
}

namespace {

FontSet& setOfThisThread() {
  static constinit std::atomic<unsigned> threads{0};
  thread_local const unsigned number = threads.fetch_add(1, std::memory_order_relaxed) % mostSets;
  static constinit std::array<std::atomic<FontSet*>, mostSets> sets{};
  static constinit Mutex making;
  FontSet* set = sets[number].load(std::memory_order_acquire);
  if (!set || !set->isOfThisProcess()) {
    const MutexLock lock(making);
    set = sets[number].load(std::memory_order_acquire);
    if (!set || !set->isOfThisProcess()) {
      set = new FontSet;  // the parent process's set is not destroyed, because its thread may have left it unfinished
      sets[number].store(set, std::memory_order_release);
    }
  }
  return *set;
}

}  // namespace

FontUse::FontUse() : set_(setOfThisThread()) { set_.mutex.lock(); }

}  // namespace norvik::detail
