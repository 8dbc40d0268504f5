// NorvikCore/Categories/NSString+Norvik.h - emptiness, quoting, first letters, file names, plurals, and rough checks of
// what a text contains.
//
//   isNilOrEmpty(" \n");                              // true
//   sqlLiteEscapeString("O'Neil");                    // "'O''Neil'", quotes included
//   nk_objCKeyPath("GrossPay.TaxCode");               // "grossPay.taxCode"
//   nk_sanitizeFileNameString("a/b:c.pdf", "-");      // "a-b-c-pdf"
//
// Characters are UTF-16 units. The first character of a text that begins with a surrogate pair is the first half of the
// pair, which has no case. Case and white space are defined by Unicode (NSCharacterClass.h). Every function is linear
// and safe on any thread.
#pragma once

#include "NorvikCore/platform/appkit/NSFont.h"
#include "NorvikCore/platform/collections/NSArray.h"
#include "NorvikCore/platform/foundation/NSAttributedString.h"
#include "NorvikCore/platform/values/NSString.h"

#include <cstdint>
#include <optional>

namespace norvik {

/// True if the text is absent or contains only white space and line breaks.
[[nodiscard]] NK_EXPORT bool isNilOrEmpty(const std::optional<NSString>& string);
[[nodiscard]] NK_EXPORT bool isEmpty(const NSString& string);

/// The text as an SQL literal: every "'" is doubled, and one is added at each end. A NUL stays, and ends a statement
/// given to SQLite.
[[nodiscard]] NK_EXPORT NSString sqlLiteEscapeString(const NSString& string);

/// True if the text contains no white space and no line break, and has at least one character before a single colon at
/// its end: "save:".
[[nodiscard]] NK_EXPORT bool isValidActionSelectorName(const NSString& string);

/// The text with its first character capitalised ("\u00DF" becomes "Ss"). An empty text raises NSRangeException.
[[nodiscard]] NK_EXPORT NSString nk_uppercaseFirstCharacter(const NSString& string);
[[nodiscard]] NK_EXPORT NSString nk_lowercaseFirstCharacter(const NSString& string);
/// Lowercases the first character of each part between separators. An empty part, as in "a..b", raises
/// NSRangeException. An empty separator separates nothing.
[[nodiscard]] NK_EXPORT NSString nk_lowercaseFirstCharactersSeparatedByString(const NSString& string,
                                                                              const NSString& separator);
[[nodiscard]] NK_EXPORT NSString nk_objCKeyPath(const NSString& string);

/// Replaces each of `.:/\?%*|"<>`, then removes white space and line breaks at both ends. The result may be empty, and
/// may contain line breaks, NULs and other control characters.
[[nodiscard]] NK_EXPORT NSString nk_sanitizeFileNameString(const NSString& string,
                                                           const NSString& replacement = NSString());
/// Does the same to the name and, separately, to its path extension, which stays an extension. As in every path,
/// slashes at the end are ignored, and a name whose only dot is at its beginning has no extension. If there is no
/// extension, or nothing is left of it, the result has no dot. If nothing is left of the name, the result is empty,
/// even if there is an extension.
[[nodiscard]] NK_EXPORT NSString nk_sanitizeFileNameExtString(const NSString& string, const NSString& replacement);

/// "image/jpg" for jpg and jpeg, "image/png" or "image/gif", ignoring case; otherwise "application/octet-stream", also
/// for an extension that contains white space. The type of JPEG differs deliberately from the "image/jpeg" of
/// nk_imageMimeTypeByIntrospection().
[[nodiscard]] NK_EXPORT NSString nk_imageMimeTypeFromPathExtension(const NSString& path);

/// "is" for 0 and 1, otherwise "are". 0 deliberately counts as singular: "0 employee is".
[[nodiscard]] NK_EXPORT NSString nk_pluralIs(std::uint64_t count);
/// Empty for 0 and 1, otherwise "s". 0 deliberately counts as singular here too.
[[nodiscard]] NK_EXPORT NSString nk_pluralSuffix(std::uint64_t count);

// Deliberately rough: a text that passes may be invalid, and a valid text may fail.

/// True if "<?xml" is anywhere in the text, in upper or lower case.
[[nodiscard]] NK_EXPORT bool nk_isXml(const NSString& string);
/// True if the text looks like an object that begins with a quoted key: "{", white space or line breaks, a double
/// quote, no further line break, and "}" at the end. One line break after the "}" is allowed.
[[nodiscard]] NK_EXPORT bool nk_isJson(const NSString& string);

/// Inserts a space before every capital, also at the beginning: "GrossPay" gives " Gross Pay". Title-case letters count
/// as capitals. Capitals beyond U+FFFF do not, because they are two units.
[[nodiscard]] NK_EXPORT NSString nk_stringFromCamelCase(const NSString& string);

/// Returns the receiver itself if `occurrence` is not found or empty. Case-sensitive.
[[nodiscard]] NK_EXPORT NSString nk_stringByReplacingFirstOccurrenceOfString(const NSString& string,
                                                                             const NSString& occurrence,
                                                                             const NSString& withString);

/// Splits the text into lines that, drawn in the font, are no wider than `maxWidth` points; fractions of a point do not
/// count. A line is broken at white space, including no-break spaces and tabs. Each such character ends a word and
/// becomes " ". A word that is too wide has a line of its own. Line breaks stay in their word. The result has at least
/// one line, even for an empty text. Widths are measured by widthInFont(), whose costs and errors apply.
[[nodiscard]] NK_EXPORT Ref<NSArray> nk_splitStringMaxWidth(const NSString& string, double maxWidth,
                                                            const NSFont& font);
/// The same lines as one text, joined by "\n".
[[nodiscard]] NK_EXPORT NSString nk_wrapStringMaxWidth(const NSString& string, double maxWidth, const NSFont& forFont);

/// The text with these attributes over its whole length; an empty Ref means no attributes.
[[nodiscard]] NK_EXPORT Ref<NSAttributedString> nk_addAttributes(const NSString& string,
                                                                 const Ref<NSDictionary>& attributes);

}  // namespace norvik
