// NorvikCore/platform/appkit/internal/PangoLibrary.h - the functions of Pango and Cairo, loaded on first use.
//
//   const PangoLibrary& pango = pangoLibrary();
//   PangoLayout* layout = pango.pango_layout_new(context);
//
// The library is not linked to Pango: a program that never measures or draws text does not load it and the thirty
// libraries that it depends on, and therefore starts faster.
#pragma once

#include <cairo-pdf.h>
#include <pango/pangocairo.h>
#include <memory>

namespace norvik::detail {

// Several per line, because one per line would take two pages.
// clang-format off
#define NK_PANGO_FUNCTIONS(function)                                                             \
  function(cairo_create) function(cairo_destroy) function(cairo_fill)                            \
  function(cairo_font_options_create) function(cairo_font_options_destroy)                       \
  function(cairo_font_options_set_antialias) function(cairo_font_options_set_hint_metrics)       \
  function(cairo_font_options_set_hint_style) function(cairo_image_surface_create)               \
  function(cairo_line_to) function(cairo_move_to) function(cairo_pdf_surface_create_for_stream)  \
  function(cairo_pdf_surface_set_metadata) function(cairo_rectangle) function(cairo_scale)       \
  function(cairo_scaled_font_destroy) function(cairo_scaled_font_reference)                      \
  function(cairo_set_line_width) function(cairo_set_scaled_font) function(cairo_set_source_rgba) \
  function(cairo_show_page) function(cairo_show_text_glyphs) function(cairo_status)              \
  function(cairo_status_to_string) function(cairo_stroke) function(cairo_surface_destroy)        \
  function(cairo_surface_finish) function(cairo_surface_status)                                  \
  function(cairo_surface_write_to_png_stream) function(cairo_tag_begin) function(cairo_tag_end)  \
  function(g_free) function(g_object_unref) function(pango_attr_background_alpha_new)            \
  function(pango_attr_background_new) function(pango_attr_font_desc_new)                         \
  function(pango_attr_foreground_alpha_new) function(pango_attr_foreground_new)                  \
  function(pango_attr_insert_hyphens_new)                                                        \
  function(pango_attr_list_insert) function(pango_attr_list_new) function(pango_attr_list_unref) \
  function(pango_attr_underline_new) function(pango_cairo_context_set_font_options)              \
  function(pango_cairo_context_set_resolution) function(pango_cairo_font_get_scaled_font)        \
  function(pango_cairo_font_map_new) function(pango_cairo_show_layout_line)                      \
  function(pango_context_get_font_map) function(pango_context_set_round_glyph_positions)         \
  function(pango_font_description_free) function(pango_font_description_new)                     \
  function(pango_font_description_set_absolute_size) function(pango_font_description_set_family) \
  function(pango_font_description_set_style) function(pango_font_description_set_weight)         \
  function(pango_font_map_create_context) function(pango_font_map_load_fontset)                  \
  function(pango_fontset_foreach) function(pango_layout_get_baseline)                            \
  function(pango_layout_get_iter) function(pango_layout_get_line_count)                          \
  function(pango_layout_get_line_readonly) function(pango_layout_get_size)                       \
  function(pango_layout_iter_free) function(pango_layout_iter_get_baseline)                      \
  function(pango_layout_iter_get_line_extents) function(pango_layout_iter_get_line_readonly)     \
  function(pango_layout_iter_next_line) function(pango_layout_line_get_x_ranges)                 \
  function(pango_layout_new) function(pango_layout_set_attributes)                               \
  function(pango_layout_set_font_description) function(pango_layout_set_text)                    \
  function(pango_layout_set_width) function(pango_layout_set_wrap)
// clang-format on

struct PangoLibrary {
#define NK_PANGO_MEMBER(name) decltype(&::name) name;
  NK_PANGO_FUNCTIONS(NK_PANGO_MEMBER)
#undef NK_PANGO_MEMBER
};

/// Raises NSGenericException if it cannot be loaded; the next call tries again.
[[nodiscard]] const PangoLibrary& pangoLibrary();

/// A deleter that calls one of the functions.
template <auto function>
struct PangoFree {
  void operator()(auto* object) const { (pangoLibrary().*function)(object); }
};

template <class T, auto function = &PangoLibrary::g_object_unref>
using PangoOwned = std::unique_ptr<T, PangoFree<function>>;
using OwnedAttributes = PangoOwned<PangoAttrList, &PangoLibrary::pango_attr_list_unref>;
using OwnedDescription = PangoOwned<PangoFontDescription, &PangoLibrary::pango_font_description_free>;
using OwnedIterator = PangoOwned<PangoLayoutIter, &PangoLibrary::pango_layout_iter_free>;
using OwnedScaledFont = PangoOwned<cairo_scaled_font_t, &PangoLibrary::cairo_scaled_font_destroy>;

}  // namespace norvik::detail
