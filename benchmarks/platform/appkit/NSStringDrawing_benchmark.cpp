// benchmarks/platform/appkit/NSStringDrawing_benchmark.cpp - the width of a word that was measured before, and wrapping
// a page of 3,000 words, compared with a Pango layout for each measurement.
#include "NorvikCore/platform/appkit/NSStringDrawing.h"

#include "NorvikCore/Categories/NSString+Norvik.h"

#include <benchmark/benchmark.h>
#include <pango/pangocairo.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

using namespace norvik;

constexpr double pageWidth = 451;  // A4 without its margins
constexpr int wordCount = 3'000;

void require(bool right, const char* what) {
  if (right) return;
  std::fprintf(stderr, "wrong answer: %s\n", what);
  std::exit(1);
}

const Ref<NSFont>& font() {
  static const Ref<NSFont> sans = NSFont::fontWithName("DejaVu Sans", 11);
  return sans;
}

/// The work of a program that uses Pango alone.
class PangoMeasure {
 public:
  PangoMeasure() {
    PangoContext* const context = pango_font_map_create_context(pango_cairo_font_map_get_default());
    pango_cairo_context_set_resolution(context, 72);
    pango_context_set_round_glyph_positions(context, FALSE);
    cairo_font_options_t* const options = cairo_font_options_create();
    cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_NONE);
    cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_OFF);
    pango_cairo_context_set_font_options(context, options);
    cairo_font_options_destroy(options);
    layout_ = pango_layout_new(context);
    g_object_unref(context);
    PangoFontDescription* const description = pango_font_description_from_string("DejaVu Sans 11");
    pango_layout_set_font_description(layout_, description);
    pango_font_description_free(description);
  }
  ~PangoMeasure() { g_object_unref(layout_); }
  PangoMeasure(const PangoMeasure&) = delete;
  PangoMeasure& operator=(const PangoMeasure&) = delete;

  double width(const std::string& text) {
    pango_layout_set_text(layout_, text.data(), static_cast<int>(text.size()));
    int width = 0;
    pango_layout_get_size(layout_, &width, nullptr);
    return static_cast<double>(width) / PANGO_SCALE;
  }

  int linesOfPage(const std::string& text) {
    pango_layout_set_width(layout_, static_cast<int>(pageWidth * PANGO_SCALE));
    pango_layout_set_text(layout_, text.data(), static_cast<int>(text.size()));
    return pango_layout_get_line_count(layout_);
  }

 private:
  PangoLayout* layout_;
};

/// 300 different words.
std::string page() {
  std::string text;
  for (int i = 0; i < wordCount; ++i) text += (i ? " word" : "word") + std::to_string(i % 300);
  return text;
}

void widthOurs(benchmark::State& state) {
  PangoMeasure pango;
  const NSString word = "wages";
  require(std::abs(widthInFont(word, *font()) - pango.width("wages")) < 0.01, "the width of a word");
  for (auto _ : state) benchmark::DoNotOptimize(widthInFont(word, *font()));
}
void widthPango(benchmark::State& state) {
  PangoMeasure pango;
  const std::string word = "wages";
  for (auto _ : state) benchmark::DoNotOptimize(pango.width(word));
}

void wrapOurs(benchmark::State& state) {
  PangoMeasure pango;
  const NSString text = page();
  const auto lines = static_cast<int>(nk_splitStringMaxWidth(text, pageWidth, *font())->count());
  // Differences of a fraction of a point give some lines one word more.
  require(std::abs(lines - pango.linesOfPage(page())) <= 0.02 * lines, "the lines of a page");
  for (auto _ : state) benchmark::DoNotOptimize(nk_splitStringMaxWidth(text, pageWidth, *font()));
}
void wrapPango(benchmark::State& state) {
  PangoMeasure pango;
  const std::string text = page();
  for (auto _ : state) benchmark::DoNotOptimize(pango.linesOfPage(text));
}

BENCHMARK(widthOurs)->Name("width of a kept word/ours");
BENCHMARK(widthPango)->Name("width of a kept word/Pango's layout");
BENCHMARK(wrapOurs)->Name("wrap 3000 words/ours")->Unit(benchmark::kMicrosecond);
BENCHMARK(wrapPango)->Name("wrap 3000 words/Pango's layout")->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
