// SPDX-License-Identifier: MIT
#pragma once

#include <ky/kyExport.h>

#include <cstddef>
#include <cstdint>
#include <locale>
#include <string>
#include <vector>

namespace ky
{

/// Functions on byte strings, which hold UTF-8 by convention, and on wide strings, which hold the platform's wide
/// encoding: UTF-16 on Windows, UTF-32 on Linux.
///
/// White space means space, tab, line feed, vertical tab, form feed and carriage return. Letters are folded byte by
/// byte: only A-Z and a-z are affected, never a byte above 127. Positions and lengths count bytes unless stated
/// otherwise.
///
/// Nothing here throws on bad text; only running out of memory throws. All functions may be called from several threads
/// at once on different strings; InitializeStringUtils() and TerminateStringUtils() must be serialised by the caller,
/// which the initialization of the library does.
class KY_API kyStringUtils
{
public:
    kyStringUtils() = delete;

    /// The position that the Find functions return when nothing is found: all bits set.
    static constexpr std::size_t npos = static_cast<std::size_t>(-1);

    /// Character sets of narrow strings.
    enum kyCharSet
    {
        Ansi = 0, ///< the active ANSI code page of Windows; Windows-1252 elsewhere
        Utf8 = 1,
        Ascii = 2 ///< seven-bit ASCII
    };

    /// \name Trimming and case
    /// In place; each returns its argument.
    /// @{
    static std::string& ltrim(std::string& text); ///< takes white space away in front
    static std::string& rtrim(std::string& text); ///< takes white space away at the end
    static std::string& trim(std::string& text);  ///< takes white space away at both ends

    /// Trims, then cuts every run of white space inside the text down to its first character, whatever that is.
    static std::string& trimAndRemoveConsecutiveSpaces(std::string& text);

    static std::string& toUpper(std::string& text); ///< a-z only
    static std::string& toLower(std::string& text); ///< A-Z only
    /// @}

    /// Overwrites the whole buffer of the string with zeros, its unused capacity included, and makes the string empty.
    /// For passwords and keys. Copies made earlier, and buffers the string has left behind by growing, are out of
    /// reach.
    static void SecureClear(std::string& text);

    /// \name Replacing
    /// Every occurrence of `from`, found from left to right, gives way to `to`. Inserted text is not searched again and
    /// occurrences do not overlap. `from` must not be empty; when it is, nothing is replaced.
    /// @{
    /// \return `text`
    static std::string& replace(std::string& text, const std::string& from, const std::string& to);
    /// \return `text`
    static std::wstring& replace(std::wstring& text, const std::wstring& from, const std::wstring& to);

    /// \return the number of replacements
    static int ReplaceAllOccurences(std::string& text, const std::string& from, const std::string& to);
    /// @}

    /// \name Searching
    /// An empty text is found at position 0 and is a prefix and suffix of every text.
    /// @{

    /// Byte position of the first occurrence; `std::string::npos` when there is none.
    [[nodiscard]] static std::size_t FindCaseSensitive(const std::string& text, const std::string& sub);
    /// The same with A-Z and a-z taken for equal.
    [[nodiscard]] static std::size_t FindCaseInsensitive(const std::string& text, const std::string& sub);
    /// Whether `sub` occurs; with A-Z and a-z taken for equal unless `caseSensitive`.
    [[nodiscard]] static bool Contains(const std::string& text, const std::string& sub, bool caseSensitive = true);
    /// Whether the bytes of `prefix` stand in front.
    [[nodiscard]] static bool StartsWith(const std::string& text, const std::string& prefix);
    /// Whether the bytes of `suffix` stand at the end.
    [[nodiscard]] static bool endsWith(const std::string& text, const std::string& suffix);
    /// @}

    /// \name Splitting
    /// @{

    /// Appends the tokens of `text` to `out`, which is not cleared first. A separator at the very end gives no empty
    /// token behind it, and an empty text gives no token; other empty tokens are kept unless `skipEmpty` is set.
    /// \return `out`
    static std::vector<std::string>& Split(const std::string& text, char separator, std::vector<std::string>& out,
                                           bool skipEmpty = false);
    /// The tokens alone.
    [[nodiscard]] static std::vector<std::string> Split(const std::string& text, char separator,
                                                        bool skipEmpty = false);

    /// Splits the NUL-terminated `buffer` in place: every separator becomes a NUL, and `out` is replaced by the starts
    /// of the tokens, which point into the buffer. Every empty token is kept, the one behind a separator at the very
    /// end included; an empty buffer gives one empty token. A null buffer gives none. \return `out`
    static std::vector<char*>& Split(char* buffer, char separator, std::vector<char*>& out);

    /// Appends the text before the first separator and the text after it, or the whole text when there is none.
    /// \return `out`
    static std::vector<std::string>& SplitFirst(const std::string& text, char separator, std::vector<std::string>& out);
    /// The one or two parts alone.
    [[nodiscard]] static std::vector<std::string> SplitFirst(const std::string& text, char separator);
    /// @}

    /// \name Hexadecimal and UUID text
    /// @{

    /// `out` becomes two lowercase digits a byte, high nibble first. `data` may be null when `length` is 0.
    static void ToHex(const char* data, std::size_t length, std::string& out);

    /// Uppercase digits, padded with zeros to `width` digits. A width above 16 counts as 16.
    [[nodiscard]] static std::string ToHex(std::uint64_t value, unsigned width);

    /// Decodes pairs of digits of either case. `out` is sized to `length` / 2 bytes first.
    /// \return false when `length` is odd, or at the first pair that holds anything but digits; the bytes before it
    /// have then been written, and those from it on are unspecified.
    static bool FromHex(const char* text, std::size_t length, std::string& out);

    /// The 16 bytes at `uuid` in stored order, two uppercase digits each: 32 characters, or, when `decorated`, 38 with
    /// braces around the groups of 8, 4, 4, 4 and 12 digits and dashes between them.
    static void UUIDToHex(const unsigned char* uuid, std::string& out, bool decorated);

    /// Whether the text is 32 digits of either case, or 38 characters of which those at the places of the digits in the
    /// decorated form are digits; the six delimiters may be anything. Dashes without braces are refused.
    [[nodiscard]] static bool IsUUID(const std::string& text);

    /// Writes the 16 bytes of a text that IsUUID() accepts, in the order of the text.
    /// \return false for any other text; bytes at `out` may then have been written.
    static bool UUIDToBinary(const std::string& text, unsigned char* out);
    /// @}

    /// \name XML and booleans
    /// @{

    /// Replaces the five characters that XML reserves by "&quot;", "&amp;", "&apos;", "&lt;" and "&gt;", in place.
    static std::string& EscapeXmlString(std::string& text);

    /// False for a null pointer and, after trimming and in either case, for "f", "false" and "0". True for every other
    /// text: the empty one, "no" and "off" included.
    [[nodiscard]] static bool parseBool(const char* text);
    /// @}

    /// \name UTF-8 and character sets
    /// Conversions end at the first NUL character. A conversion that fails writes one line to the standard output and
    /// gives an empty string.
    /// @{

    /// Whether the whole text is well-formed UTF-8; true for the empty text. Overlong forms, surrogates and code points
    /// above U+10FFFF are ill-formed. NUL characters are allowed.
    [[nodiscard]] static bool IsUtf8String(const std::string& text);

    /// Number of code points; 0 when the text is not well-formed.
    [[nodiscard]] static std::size_t CountUtf8Char(const std::string& text);

    /// Ill-formed UTF-8 becomes U+FFFD. Fails for `Ascii` when a byte is above 127.
    [[nodiscard]] static std::wstring convertToUnicode(const std::string& text, kyCharSet from);

    /// A lone surrogate, or anything else that is not a code point, becomes U+FFFD in UTF-8. A character that the ANSI
    /// code page does not have becomes a similar one or '?'. Fails for `Ascii` when a character is above 127.
    [[nodiscard]] static std::string convertTo8Bits(const std::wstring& text, kyCharSet to);

    /// convertToUnicode() and convertTo8Bits() one after the other.
    [[nodiscard]] static std::string convertCharset(const std::string& text, kyCharSet from, kyCharSet to);

    /// The text itself when it is well-formed UTF-8. Otherwise the text taken as `Ansi`, or, should that not give
    /// well-formed UTF-8, the text with `replacement` in place of every byte above 127.
    [[nodiscard]] static std::string UnknownEncodingToUtf8(const std::string& text, char replacement);
    /// @}

    /// \name Numbers to text
    /// The same under every locale of the process, in ASCII.
    /// @{

    /// The value in decimal, filled up with zeros from the left to `width` characters. The zeros go before a minus
    /// sign: -5 with width 4 gives "00-5". A width that is not larger than the number's length adds nothing.
    [[nodiscard]] static std::string fromInt(int value, int width = 1);
    /// As fromInt(), without a sign.
    [[nodiscard]] static std::string fromUInt(unsigned int value, int width = 1);
    /// As fromInt().
    [[nodiscard]] static std::string fromInt64(std::int64_t value, int width = 1);
    /// As fromInt(), without a sign.
    [[nodiscard]] static std::string fromUInt64(std::uint64_t value, int width = 1);

    /// The value as a standard output stream writes it in the classic locale: with `precision` decimals when `fixed` is
    /// set, otherwise in general notation with `precision` significant digits, without trailing zeros and with an
    /// exponent of at least two digits ("1e+06") where that is the shorter form. Halves are decided by the exact binary
    /// value. A negative precision counts as 6, and 0 significant digits as 1. Infinities are "inf" and "-inf", and
    /// what is not a number is "nan" or "-nan".
    [[nodiscard]] static std::string fromFloat(float value, int precision = 6, bool fixed = false);
    /// As for float.
    [[nodiscard]] static std::string fromFloat(double value, int precision = 6, bool fixed = false);

    /// The value rounded to a fraction, ties upwards in magnitude, with a decimal point.
    ///
    /// The denominator 1 rounds to whole numbers, 2 to halves (1 decimal), 4 to quarters (2), 5 to fifths (1), 8 to
    /// eighths (3), 16 to sixteenths (4 decimals). `extraDecimals` is added to the number of decimals; the step stays
    /// the same number of units in the last place, so that 2 with one extra decimal rounds to 0.05. When that makes 0
    /// decimals, or `denominator` or `extraDecimals` is 17 or more, the value is rounded to the nearest integer, halves
    /// away from zero. When it makes less than 0, the integer part is given.
    ///
    /// `maxDecimals` 0 leaves out the decimals after rounding; any other value changes nothing. With `forceSign` a
    /// value of 0 or more has a "+"; a negative value that becomes 0 has its "-" only then. Not a number is "nan";
    /// infinities are "inf" and "-inf".
    ///
    /// Other denominators are not to be passed; they round to one unit in the last place.
    [[nodiscard]] static std::string roundNumber(double value, unsigned char denominator, char extraDecimals = 0,
                                                 bool forceSign = false, unsigned char maxDecimals = 255);

    /// The best approximation of `value` by a fraction whose denominator is at most `maxDenominator`, found by
    /// continued fractions. `maxDenominator` must be at least 1 (less counts as 1). The denominator is at least 1, and
    /// the sign is the numerator's. A numerator that would not fit is avoided by a smaller denominator; values beyond
    /// 64 bits and infinities give the nearest limit over 1 (the negative one is -(2^63 - 1)), and what is not a number
    /// 0 over 1.
    static void computeFractionnalRepresentation(double value, std::int64_t& numerator, std::int64_t& denominator,
                                                 std::int64_t maxDenominator);

    /// What compareSoftwareVersion() tells.
    enum SoftwareVersionComparisonResult
    {
        VersionInvalid = 1, ///< a text did not parse, or nothing was compared
        VersionEqual = 2,   ///< equal over the compared components
        VersionLower = 4,   ///< the first version is lower
        VersionHigher = 8   ///< the first version is higher
    };

    /// Compares versions such as "1.10.2" number by number. The second one decides how many are compared, at most
    /// `maxComponents`: missing components of the first are 0, further ones are ignored, so that "1.2.3" equals "1.2".
    ///
    /// White space around a text is ignored. A component is decimal, hexadecimal with 0x or octal with a leading 0, at
    /// most 2^32 - 1; an empty one between two points is 0.
    [[nodiscard]] static SoftwareVersionComparisonResult
    compareSoftwareVersion(const std::string& a, const std::string& b, std::size_t maxComponents = npos);
    /// @}

    /// \name Natural order
    /// The order in which people expect names: by the user's locale, with runs of the digits 0 to 9 compared by their
    /// value, so that "file2" comes before "file10", however long they are. -1, 0 or 1 for less, equal and greater.
    ///
    /// On Windows the system compares (`CompareStringEx`), and a failure, texts of more than 2^31 - 1 characters
    /// included, gives -2. Elsewhere the collation and the case mapping of the locale decide that the environment named
    /// when texts were first compared, with ASCII blanks and punctuation before digits before letters; accents, and
    /// then case, decide only between texts that are otherwise the same. Texts are equal there only if nothing but
    /// leading zeros, and case when it is ignored, differs. The process's own locale plays no role.
    /// @{

    /// Compares `lengthA` characters at `a` with `lengthB` at `b`. Neither pointer may be null.
    [[nodiscard]] static int CompareUTF16Natural(const wchar_t* a, std::size_t lengthA, const wchar_t* b,
                                                 std::size_t lengthB, bool caseSensitive);

    /// The same on the texts that convertToUnicode() makes: ill-formed UTF-8 counts as U+FFFD, and a text ends at its
    /// first NUL.
    [[nodiscard]] static int CompareUTF8Natural(const std::string& a, const std::string& b, bool caseSensitive);

    /// Whether CompareUTF8Natural() gives -1: strict weak orders for sorting and for ordered containers.
    [[nodiscard]] static bool UTF8NaturalSortFunction(const std::string& a, const std::string& b);
    /// The same without regard to case.
    [[nodiscard]] static bool UTF8NaturalSortFunctionCaseInsensitive(const std::string& a, const std::string& b);
    /// @}

    /// \name Locales
    /// @{

    /// Creates the two locale objects. Done by the initialization of the library.
    /// \return false when they exist already
    static bool InitializeStringUtils();

    /// Frees the two locale objects.
    /// \return false when they do not exist
    static bool TerminateStringUtils();

    /// Does nothing. May be called on every new thread.
    static void InitializeForThread();

    /// Where the handle of the C runtime's locale "C" is stored, for functions such as `strtod_l` and `_strtod_l`.
    /// Never null; the handle in it is null until InitializeStringUtils() and again after TerminateStringUtils(). The
    /// library owns the handle: do not change or free it.
    [[nodiscard]] static kyCLocaleHandle* GetCLocale();

    /// The classic locale of the standard library, for streams whose output must not depend on the user's settings.
    [[nodiscard]] static const std::locale& GetCPlusLocale();
    /// @}
};

} // namespace ky
