#pragma once
// Values that the functions of <qvxsys/IcuFunctions.h> take and return, by ICU's values, beside those of
// <qvxsys/ICUTypes.h>. Where ICU takes or returns a plain integer the enumeration is a plain one, too:
//
//     std::int32_t const tag = QvxICU::t_ubrk_getRuleStatus(words);
//     bool const number = tag >= QvxICU::ICUWordNumber && tag < QvxICU::ICUWordNumberLimit;

#include <cstdint>

namespace QvxICU {

/// In place of a code point where there is none: the end of a text, no composition (ICU's U_SENTINEL, -1).
inline constexpr char32_t ICUNoCodePoint = 0xFFFFFFFF;

/// Options of case folding, of comparison without case and of title case; combined with |.
enum ICUCaseOption : std::uint32_t {
    ICUFoldCaseDefault = 0,
    ICUFoldCaseExcludeSpecialI = 1, ///< Turkic: dotted and dotless i are told apart
    ICUTitleCaseWholeString = 0x20,
    ICUTitleCaseSentences = 0x40,
    ICUTitleCaseNoLowercase = 0x100, ///< the rest of a word stays as it is
    ICUTitleCaseNoBreakAdjustment = 0x200,
    ICUTitleCaseAdjustToCased = 0x400,
    ICUCompareCodePointOrder = 0x8000,
    ICUCompareIgnoreCase = 0x10000,
};

/// Options of patterns of sets; combined with |.
enum ICUSetOption : std::uint32_t {
    ICUSetIgnoreSpace = 1,
    ICUSetCaseInsensitive = 2,
    ICUSetAddCaseMappings = 4,
};

/// What stands before a word boundary: t_ubrk_getRuleStatus is in [Number, NumberLimit) after a number.
enum ICUWordBreakTag : std::int32_t {
    ICUWordNone = 0,
    ICUWordNoneLimit = 100,
    ICUWordNumber = 100,
    ICUWordNumberLimit = 200,
    ICUWordLetter = 200,
    ICUWordLetterLimit = 300,
    ICUWordKana = 300,
    ICUWordKanaLimit = 400,
    ICUWordIdeo = 400,
    ICUWordIdeoLimit = 500,
};

/// Whether a line may or must end here, ranges as above.
enum ICULineBreakTag : std::int32_t {
    ICULineSoft = 0,
    ICULineSoftLimit = 100,
    ICULineHard = 100,
    ICULineHardLimit = 200,
};

/// What ended a sentence, ranges as above.
enum ICUSentenceBreakTag : std::int32_t {
    ICUSentenceTerm = 0,
    ICUSentenceTermLimit = 100,
    ICUSentenceSep = 100,
    ICUSentenceSepLimit = 200,
};

/// What kind of encoding a converter is for.
enum class ICUConverterType : int {
    Unsupported = -1,
    Sbcs = 0,
    Dbcs = 1,
    Mbcs = 2,
    Latin1 = 3,
    Utf8 = 4,
    Utf16BigEndian = 5,
    Utf16LittleEndian = 6,
    Utf32BigEndian = 7,
    Utf32LittleEndian = 8,
    EbcdicStateful = 9,
    Iso2022 = 10,
    Lmbcs1 = 11,
    Lmbcs2 = 12,
    Lmbcs3 = 13,
    Lmbcs4 = 14,
    Lmbcs5 = 15,
    Lmbcs6 = 16,
    Lmbcs8 = 17,
    Lmbcs11 = 18,
    Lmbcs16 = 19,
    Lmbcs17 = 20,
    Lmbcs18 = 21,
    Lmbcs19 = 22,
    Hz = 23,
    Scsu = 24,
    Iscii = 25,
    UsAscii = 26,
    Utf7 = 27,
    Bocu1 = 28,
    Utf16 = 29,
    Utf32 = 30,
    Cesu8 = 31,
    ImapMailbox = 32,
    CompoundText = 33,
};

/// Whose numbers of code pages are meant.
enum class ICUConverterPlatform : int {
    Unknown = -1,
    Ibm = 0,
};

/// Which code points of an encoding.
enum class ICUConverterUnicodeSet : int {
    RoundtripSet = 0,
    RoundtripAndFallbackSet = 1,
};

/// Groups of characters that a collator can move; scripts have ICU's script codes.
enum ICUColReorderCode : std::int32_t {
    ICUReorderDefault = -1,
    ICUReorderNone = 103,
    ICUReorderSpace = 4096,
    ICUReorderPunctuation = 4097,
    ICUReorderSymbol = 4098,
    ICUReorderCurrency = 4099,
    ICUReorderDigit = 4100,
};

/// Which rules of a collator.
enum class ICUColRuleOption : int {
    TailoringOnly = 0,
    FullRules = 1,
};

/// Which bound of a sort key.
enum class ICUColBoundMode : int {
    Lower = 0,
    Upper = 1,
    UpperLong = 2,
};

/// What of a text search can be set.
enum class ICUSearchAttribute : int {
    Overlap = 0,
    CanonicalMatch = 1,
    ElementComparison = 2,
};

/// The values of ICUSearchAttribute.
enum class ICUSearchAttributeValue : int {
    Default = -1,
    Off = 0,
    On = 1,
    StandardElementComparison = 2,
    PatternBaseWeightIsWildcard = 3,
    AnyBaseWeightIsWildcard = 4,
};

/// What an amount of money is for: cash is rounded to the coins there are.
enum class ICUCurrencyUsage : int {
    Standard = 0,
    Cash = 1,
};

/// Which name of a currency.
enum class ICUCurrNameStyle : int {
    SymbolName = 0,
    LongName = 1,
    NarrowSymbolName = 2,
    FormalSymbolName = 3,
    VariantSymbolName = 4,
};

/// Which currencies t_ucurr_openISOCurrencies lists; combined with |.
enum ICUCurrencyType : std::uint32_t {
    ICUCurrenciesAll = 0x7FFFFFFF,
    ICUCurrenciesCommon = 1,
    ICUCurrenciesUncommon = 2,
    ICUCurrenciesDeprecated = 4,
    ICUCurrenciesNonDeprecated = 8,
};

/// Where a name or a number is shown.
enum class ICUDisplayContext : int {
    StandardNames = 0,
    DialectNames = 1,
    CapitalizationNone = 256,
    CapitalizationForMiddleOfSentence = 257,
    CapitalizationForBeginningOfSentence = 258,
    CapitalizationForUiListOrMenu = 259,
    CapitalizationForStandalone = 260,
    LengthFull = 512,
    LengthShort = 513,
    Substitute = 768,
    NoSubstitute = 769,
};

/// What of ICUDisplayContext is asked for.
enum class ICUDisplayContextType : int {
    DialectHandling = 0,
    Capitalization = 1,
    DisplayLength = 2,
    SubstituteHandling = 3,
};

/// What a formattable value holds.
enum class ICUFormattableType : int {
    Date = 0,
    Double = 1,
    Long = 2,
    String = 3,
    Array = 4,
    Int64 = 5,
    Object = 6,
};

/// The parts of a written number.
enum ICUNumberFormatField : std::int32_t {
    ICUFieldInteger = 0,
    ICUFieldFraction = 1,
    ICUFieldDecimalSeparator = 2,
    ICUFieldExponentSymbol = 3,
    ICUFieldExponentSign = 4,
    ICUFieldExponent = 5,
    ICUFieldGroupingSeparator = 6,
    ICUFieldCurrency = 7,
    ICUFieldPercent = 8,
    ICUFieldPermill = 9,
    ICUFieldSign = 10,
    ICUFieldMeasureUnit = 11,
    ICUFieldCompact = 12,
    ICUFieldApproximatelySign = 13,
};

/// Where a number is padded.
enum class ICUPadPosition : int {
    PadBeforePrefix = 0,
    PadAfterPrefix = 1,
    PadBeforeSuffix = 2,
    PadAfterSuffix = 3,
};

/// The direction of characters or of lines.
enum class ICULayoutType : int {
    Ltr = 0,
    Rtl = 1,
    Ttb = 2,
    Btt = 3,
    Unknown = 4,
};

/// Which locales t_uloc_openAvailableByType lists.
enum class ICULocAvailableType : int {
    Default = 0,
    OnlyLegacyAliases = 1,
    WithLegacyAliases = 2,
};

/// How a list of accepted languages was met.
enum class ICUAcceptResult : int {
    Failed = 0,
    Valid = 1,
    Fallback = 2,
};

/// What a normaliser does.
enum class ICUNormalization2Mode : int {
    Compose = 0,
    Decompose = 1,
    Fcd = 2,
    ComposeContiguous = 3,
};

/// What a place in an ICUCharacterIterator is counted from.
enum class ICUIteratorOrigin : int {
    Start = 0,
    Current = 1,
    Limit = 2,
    Zero = 3,
    Length = 4,
};

/// How far a span of a set goes.
enum class ICUSetSpanCondition : int {
    NotContained = 0,
    Contained = 1,
    Simple = 2,
};

/// How surrogates count in the ranges of a map.
enum class ICUCodePointMapRange : int {
    Normal = 0,
    FixedLeadSurrogates = 1,
    FixedAllSurrogates = 2,
};

} // namespace QvxICU
