// NorvikCore/platform/appkit/internal/ShapedText.h - words as glyphs with their widths, kept for each font.
//
//   FontUse fonts;                            // one thread's turn with a set of fonts
//   KeptFont& font = fonts.fontFor(*nsFont);
//   font.widthOf("Weekly wages");             // in Pango's units, 1024 to the point
//
// Pango's fonts serve one thread at a time, so there are several sets of them, and a FontUse locks one. No code of
// users runs meanwhile. A set keeps so many fonts, and a font so many words; beyond that they are forgotten and made
// again.
#pragma once

#include "NorvikCore/platform/appkit/NSFont.h"
#include "NorvikCore/platform/appkit/internal/PangoLibrary.h"
#include "NorvikCore/platform/kernel/Fork.h"
#include "NorvikCore/platform/kernel/Mutex.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace norvik::detail {

/// Glyphs of one font, from left to right, and which bytes of the word each of them shows.
struct GlyphRun {
  cairo_scaled_font_t* font = nullptr;  ///< kept by the KeptFont
  std::vector<cairo_glyph_t> glyphs;    ///< relative to the word's start on the base line, in points
  std::vector<cairo_text_cluster_t> clusters;
};

struct ShapedWord {
  std::string text;
  std::size_t hash = 0;
  std::int64_t width = 0;
  bool isPlain = false;  ///< `run` shows all of it; else it needs a layout: another font, right to left, no glyph
  GlyphRun run;
};

/// One font, and the words it was asked for. Text is UTF-8 without line breaks.
class KeptFont {
 public:
  KeptFont(const NSFont& font, PangoContext* context);
  KeptFont(const KeptFont&) = delete;
  KeptFont& operator=(const KeptFont&) = delete;

  [[nodiscard]] const NSFont& font() const noexcept { return *font_; }
  [[nodiscard]] std::int32_t ascent() const noexcept { return ascent_; }
  [[nodiscard]] std::int32_t height() const noexcept { return height_; }
  [[nodiscard]] std::int64_t blankWidth() const noexcept { return blankWidth_; }

  /// Valid until the next call. A word has no blanks; the empty one is as wide as nothing.
  [[nodiscard]] const ShapedWord& word(std::string_view text);
  [[nodiscard]] const ShapedWord& blank() const noexcept { return blank_; }
  /// Words and blanks, and tabs; `from` is how far the line reaches already.
  [[nodiscard]] std::int64_t widthOf(std::string_view line, std::int64_t from = 0);

 private:
  [[nodiscard]] ShapedWord shape(std::string_view text);
  void forget();

  const Ref<const NSFont> font_;
  PangoContext* const context_;  ///< the set's
  const OwnedDescription description_;
  const PangoOwned<PangoLayout> layout_;
  std::vector<OwnedScaledFont> scaledFonts_;
  std::int32_t ascent_ = 0, height_ = 0;
  std::int64_t blankWidth_ = 0;
  ShapedWord blank_;
  std::vector<ShapedWord> words_;
  std::vector<std::uint32_t> table_;  ///< open addressing; 1 + the word's place, 0 for none
  std::size_t bytes_ = 0;
};

class FontSet {
 public:
  FontSet();

  Mutex mutex;
  [[nodiscard]] PangoContext* context() const noexcept { return context_.get(); }
  /// Its thread of Pango runs in this process, not in the one that this process was forked from.
  [[nodiscard]] bool isOfThisProcess() const noexcept { return generation_ == kernel::forkGeneration(); }
  [[nodiscard]] KeptFont& fontFor(const NSFont& font);

 private:
  const std::uint32_t generation_ = kernel::forkGeneration();
  const PangoOwned<PangoContext> context_;
  std::vector<std::unique_ptr<KeptFont>> fonts_;
  KeptFont* last_ = nullptr;
};

/// Waits for what Pango's own thread does for text of a font that was just laid out: it ranks the fonts that could
/// replace it, under locks of fontconfig, even if the result is not needed. A fork must not come in between.
void settle(PangoContext* context, const PangoFontDescription& description, PangoLanguage* language);

/// How Pango finds the font. One of more than 10,000 points counts as one of 10,000: FreeType has no larger ones, and
/// Cairo draws nothing more on a page after one that failed.
[[nodiscard]] OwnedDescription describe(const NSFont& font);

/// The sum of its glyphs' widths: what Pango says overflows at two million points.
[[nodiscard]] std::int64_t widthOf(const PangoLayoutLine& line);

/// The length as Pango takes it. Raises NSInvalidArgumentException for 2 GiB of text and more.
[[nodiscard]] int pangoLength(std::string_view text);

/// Locks a set of fonts, for a thread mostly the same one.
class NK_SCOPED_CAPABILITY FontUse {
 public:
  FontUse() NK_NO_THREAD_SAFETY_ANALYSIS;
  ~FontUse() NK_NO_THREAD_SAFETY_ANALYSIS { set_.mutex.unlock(); }
  FontUse(const FontUse&) = delete;
  FontUse& operator=(const FontUse&) = delete;

  /// Valid until the next call for another font.
  [[nodiscard]] KeptFont& fontFor(const NSFont& font) { return set_.fontFor(font); }
  [[nodiscard]] PangoContext* context() const noexcept { return set_.context(); }

 private:
  FontSet& set_;
};

/// True where drawableText() would give the same text.
[[nodiscard]] bool isDrawable(const NSString& text);
/// UTF-8 that Pango and Cairo take: lone halves, NUL and the noncharacters (U+FFFE, U+FFFF, ...) are U+FFFD.
[[nodiscard]] std::string drawableText(const NSString& text);

}  // namespace norvik::detail
