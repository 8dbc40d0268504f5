// NorvikCore/Categories/NSString+Norvik.h - emptiness, quoting, first letters, file names, plurals, and rough guesses
// at what a text holds.
//
//   isNilOrEmpty(" \n");                              // true
//   sqlLiteEscapeString("O'Neil");                    // "'O''Neil'", quotes included
//   nk_objCKeyPath("GrossPay.TaxCode");               // "grossPay.taxCode"
//   nk_sanitizeFileNameString("a/b:c.pdf", "-");      // "a-b-c-pdf"
//
// Characters are UTF-16 units: the first character of a text that begins with a pair is its first half, which has no
// case. Case and blanks are Unicode's. Every function is linear and safe on any thread.
#pragma once

#include "NorvikCore/platform/appkit/NSFont.h"
#include "NorvikCore/platform/collections/NSArray.h"
#include "NorvikCore/platform/foundation/NSAttributedString.h"
#include "NorvikCore/platform/values/NSString.h"

#include <cstdint>
#include <optional>

namespace norvik {

/// Absent, or nothing but blanks and line breaks.
[[nodiscard]] NK_EXPORT bool isNilOrEmpty(const std::optional<NSString>& string);
[[nodiscard]] NK_EXPORT bool isEmpty(const NSString& string);

/// As a literal of SQL: every "'" doubled, and one more at each end. A NUL stays, and ends a statement given to SQLite.
[[nodiscard]] NK_EXPORT NSString sqlLiteEscapeString(const NSString& string);

/// At least one character, none of them blank, line break or colon, and then a colon at the very end: "save:".
[[nodiscard]] NK_EXPORT bool isValidActionSelectorName(const NSString& string);

/// The first character capitalised ("\u00DF" becomes "Ss"), the rest unchanged. An empty text raises NSRangeException.
[[nodiscard]] NK_EXPORT NSString nk_uppercaseFirstCharacter(const NSString& string);
[[nodiscard]] NK_EXPORT NSString nk_lowercaseFirstCharacter(const NSString& string);
/// Of each part between separators; an empty one, as in "a..b", raises NSRangeException. An empty separator separates
/// nothing.
[[nodiscard]] NK_EXPORT NSString nk_lowercaseFirstCharactersSeparatedByString(const NSString& string,
                                                                              const NSString& separator);
[[nodiscard]] NK_EXPORT NSString nk_objCKeyPath(const NSString& string);

/// Each of `.:/\?%*|"<>` replaced, then blanks and line breaks at both ends left out. The result may be empty, and may
/// have line breaks, NULs and other control characters within.
[[nodiscard]] NK_EXPORT NSString nk_sanitizeFileNameString(const NSString& string,
                                                           const NSString& replacement = NSString());
/// The same for the name and for its path extension, which stays one. As with every path, slashes at the end do not
/// count, and a name that begins with its only dot has no extension. Without an extension, or where nothing is left of
/// it, there is no dot. A name of which nothing is left stays empty, also where there is an extension.
[[nodiscard]] NK_EXPORT NSString nk_sanitizeFileNameExtString(const NSString& string, const NSString& replacement);

/// "image/jpg" for jpg and jpeg, "image/png", "image/gif", whatever the case; else "application/octet-stream", also for
/// an extension that has blanks. JPEG is deliberately not the "image/jpeg" that nk_imageMimeTypeByIntrospection()
/// gives.
[[nodiscard]] NK_EXPORT NSString nk_imageMimeTypeFromPathExtension(const NSString& path);

/// "is" for 0 and 1, else "are". That 0 counts as one is deliberate: "0 employee is".
[[nodiscard]] NK_EXPORT NSString nk_pluralIs(std::uint64_t count);
/// Nothing for 0 and 1, else "s"; 0 deliberately again.
[[nodiscard]] NK_EXPORT NSString nk_pluralSuffix(std::uint64_t count);

// Deliberately rough: what passes need not be valid, and what does not pass may be.

/// "<?xml" is anywhere in it, in whatever case.
[[nodiscard]] NK_EXPORT bool nk_isXml(const NSString& string);
/// An object that begins with a quote: "{", blanks or line breaks, a double quote, no further line break, and "}" at
/// the end or before one line break there.
[[nodiscard]] NK_EXPORT bool nk_isJson(const NSString& string);

/// A blank before every capital, also before the first unit: "GrossPay" is " Gross Pay". Title-case letters are
/// capitals. Those beyond U+FFFF are not, because they are two units.
[[nodiscard]] NK_EXPORT NSString nk_stringFromCamelCase(const NSString& string);

/// The receiver itself where there is none, also for an empty text to be replaced. Case counts.
[[nodiscard]] NK_EXPORT NSString nk_stringByReplacingFirstOccurrenceOfString(const NSString& string,
                                                                             const NSString& occurrence,
                                                                             const NSString& withString);

/// The text in lines of texts that, drawn in the font, are no wider than `maxWidth` points; fractions of a point do not
/// count. Lines are broken at blanks, no-break ones too, and at tabs. Each of them ends a word and becomes " ", and a
/// word that is too wide has a line of its own. Line breaks stay in their word. At least one line, also of an empty
/// text. Measured by widthInFont(), whose costs and errors are theirs too.
[[nodiscard]] NK_EXPORT Ref<NSArray> nk_splitStringMaxWidth(const NSString& string, double maxWidth,
                                                            const NSFont& font);
/// The same lines in one text, "\n" between them.
[[nodiscard]] NK_EXPORT NSString nk_wrapStringMaxWidth(const NSString& string, double maxWidth, const NSFont& forFont);

/// The text with these attributes over all of it; an empty Ref is none.
[[nodiscard]] NK_EXPORT Ref<NSAttributedString> nk_addAttributes(const NSString& string,
                                                                 const Ref<NSDictionary>& attributes);

}  // namespace norvik
