#include "ByteSearch.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <utility>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace norvik_log {
namespace {

/// The rank of a byte by its frequency in logs. Spaces, digits and common letters are in every line.
int commonness(char byte) noexcept {
  constexpr std::string_view usual = "zqjxkvbywgpfmcudhlsrnioate-:.0123456789 ";
  const std::size_t rank = usual.find(byte);
  return rank == usual.npos ? 0 : static_cast<int>(rank) + 1;
}

}  // namespace

ByteSearch::ByteSearch(std::string text) : text_(std::move(text)) {
  if (text_.size() < 2) return;
  std::size_t rarest = 0;
  for (std::size_t i = 1; i < text_.size(); ++i) {
    if (commonness(text_[i]) < commonness(text_[rarest])) rarest = i;
  }
  std::size_t next = rarest == 0 ? 1 : 0;
  for (std::size_t i = 0; i < text_.size(); ++i) {
    if (i == rarest || text_[i] == text_[rarest]) continue;
    if (text_[next] == text_[rarest] || commonness(text_[i]) < commonness(text_[next])) next = i;
  }
  first_ = std::min(rarest, next);
  second_ = std::max(rarest, next);
}

const char* ByteSearch::find(const char* begin, const char* end) const noexcept {
  const std::size_t size = text_.size();
  if (size == 0) return begin;
  if (static_cast<std::size_t>(end - begin) < size) return nullptr;
  if (size == 1) return static_cast<const char*>(std::memchr(begin, text_[0], static_cast<std::size_t>(end - begin)));
  const char* const last = end - size;  // the last position at which the text can begin
  const char* at = begin;
#ifdef __SSE2__
  const __m128i first = _mm_set1_epi8(text_[first_]), second = _mm_set1_epi8(text_[second_]);
  const auto load = [](const char* from) noexcept {
    __m128i bytes;
    std::memcpy(&bytes, from, sizeof bytes);
    return bytes;
  };
  for (; last - at >= 15; at += 16) {
    const __m128i both =
        _mm_and_si128(_mm_cmpeq_epi8(load(at + first_), first), _mm_cmpeq_epi8(load(at + second_), second));
    for (auto places = static_cast<unsigned>(_mm_movemask_epi8(both)); places != 0; places &= places - 1) {
      const char* const candidate = at + __builtin_ctz(places);
      if (std::memcmp(candidate, text_.data(), size) == 0) return candidate;
    }
  }
#endif
  while (at <= last) {
    const void* const found = std::memchr(at + first_, text_[first_], static_cast<std::size_t>(last - at) + 1);
    if (found == nullptr) return nullptr;
    at = static_cast<const char*>(found) - first_;
    if (std::memcmp(at, text_.data(), size) == 0) return at;
    ++at;
  }
  return nullptr;
}

}  // namespace norvik_log
