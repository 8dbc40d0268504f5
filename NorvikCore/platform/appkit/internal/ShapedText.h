// NorvikCore/platform/appkit/internal/ShapedText.h - words as glyphs with their widths, cached for each font.
//
//   FontUse fonts;                            // locks a set of fonts for this thread
//   KeptFont& font = fonts.fontFor(*nsFont);
//   font.widthOf("Weekly wages");             // in Pango's units, 1024 to the point
//
// Pango's fonts may be used by one thread at a time, so there are several sets of them, and a FontUse locks one. No
// user code runs under the lock. The numbers of fonts in a set and of words of a font are limited; beyond the limits
// they are discarded and created again.
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

/// Glyphs of one font, from left to right, with the bytes of the word that each of them shows.
struct GlyphRun {
  cairo_scaled_font_t* font = nullptr;  ///< owned by the KeptFont
  std::vector<cairo_glyph_t> glyphs;    ///< relative to the word's start on the base line, in points
  std::vector<cairo_text_cluster_t> clusters;
};

struct ShapedWord {
  std::string text;
  std::size_t hash = 0;
  std::int64_t width = 0;
  bool isPlain = false;  ///< `run` shows all of it; else it needs a layout (another font, right to left, missing glyph)
  GlyphRun run;
};

/// One font, and its cached words. Text is UTF-8 without line breaks.
class KeptFont {
 public:
  KeptFont(const NSFont& font, PangoContext* context);
  KeptFont(const KeptFont&) = delete;
  KeptFont& operator=(const KeptFont&) = delete;

  [[nodiscard]] const NSFont& font() const noexcept { return *font_; }
  [[nodiscard]] std::int32_t ascent() const noexcept { return ascent_; }
  [[nodiscard]] std::int32_t height() const noexcept { return height_; }
  [[nodiscard]] std::int64_t blankWidth() const noexcept { return blankWidth_; }

  /// Valid until the next call. The word must not contain spaces; an empty word has no width.
  [[nodiscard]] const ShapedWord& word(std::string_view text);
  [[nodiscard]] const ShapedWord& blank() const noexcept { return blank_; }
  /// The width of words, spaces and tabs; `from` is the present width of the line, for tabs.
  [[nodiscard]] std::int64_t widthOf(std::string_view line, std::int64_t from = 0);

 private:
  [[nodiscard]] ShapedWord shape(std::string_view text);
  void forget();

  const Ref<const NSFont> font_;
  PangoContext* const context_;  ///< owned by the set
  const OwnedDescription description_;
  const PangoOwned<PangoLayout> layout_;
  std::vector<OwnedScaledFont> scaledFonts_;
  std::int32_t ascent_ = 0, height_ = 0;
  std::int64_t blankWidth_ = 0;
  ShapedWord blank_;
  std::vector<ShapedWord> words_;
  std::vector<std::uint32_t> table_;  ///< open addressing; 1 + the word's index, 0 for an empty slot
  std::size_t bytes_ = 0;
};

class FontSet {
 public:
  FontSet();

  Mutex mutex;
  [[nodiscard]] PangoContext* context() const noexcept { return context_.get(); }
  /// True if it was created in this process. In a forked child, Pango's thread of the parent does not exist.
  [[nodiscard]] bool isOfThisProcess() const noexcept { return generation_ == kernel::forkGeneration(); }
  [[nodiscard]] KeptFont& fontFor(const NSFont& font);

 private:
  const std::uint32_t generation_ = kernel::forkGeneration();
  const PangoOwned<PangoContext> context_;
  std::vector<std::unique_ptr<KeptFont>> fonts_;
  KeptFont* last_ = nullptr;
};

/// Waits until Pango's own thread has finished its work for text of a font that was just laid out. That thread ranks
/// the fonts that could replace the font, under locks of fontconfig, even if the result is not needed. A fork must not
/// happen meanwhile.
void settle(PangoContext* context, const PangoFontDescription& description, PangoLanguage* language);

/// Pango's description of the font. A size above 10,000 points is replaced by 10,000, because FreeType has no larger
/// ones and Cairo draws nothing more on a page after a failure.
[[nodiscard]] OwnedDescription describe(const NSFont& font);

/// The sum of the widths of its glyphs. Pango's own value overflows at two million points.
[[nodiscard]] std::int64_t widthOf(const PangoLayoutLine& line);

/// The length in the type that Pango takes. Raises NSInvalidArgumentException for 2 GiB of text and more.
[[nodiscard]] int pangoLength(std::string_view text);

/// Locks a set of fonts: each time the same one for a thread, except after a fork.
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

/// True if drawableText() would return the same text.
[[nodiscard]] bool isDrawable(const NSString& text);
/// UTF-8 that Pango and Cairo accept: lone surrogate halves, NUL and noncharacters (U+FFFE, U+FFFF, ...) become U+FFFD.
[[nodiscard]] std::string drawableText(const NSString& text);

}  // namespace norvik::detail
