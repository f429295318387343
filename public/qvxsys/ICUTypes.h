#pragma once
// The plain types of the layer over ICU: error codes, enumerations and opaque handles, with ICU's values and in ICU's
// order, so that no ICU header is needed. They are passed through by value; where a value is checked first, the
// function that takes it says so.
//
//     QvxICU::ICUErrorCode status = QvxICU::ICUErrorCode::ZeroError;
//     QvxICU::ICU_Collator* collator = QvxICU::t_ucol_open("sv", &status);
//     if (QvxICU::ICU_SUCCESS(status)) { ... } // warnings are successes

#include <cstdint>

namespace QvxICU {

/// ICU's error code, by value. Negative codes are warnings. Codes not named here are passed
/// through as they are; t_u_errorName names them all.
enum class ICUErrorCode : int {
    UsingFallbackWarning = -128,
    UsingDefaultWarning = -127,
    SafeCloneAllocatedWarning = -126,
    StateOldWarning = -125,
    StringNotTerminatedWarning = -124,
    SortKeyTooShortWarning = -123,
    AmbiguousAliasWarning = -122,
    DifferentUcaVersion = -121,
    ZeroError = 0,
    IllegalArgumentError = 1,
    MissingResourceError = 2,
    InvalidFormatError = 3,
    FileAccessError = 4,
    InternalProgramError = 5,
    MessageParseError = 6,
    MemoryAllocationError = 7,
    IndexOutOfBoundsError = 8,
    ParseError = 9,
    InvalidCharFound = 10,
    TruncatedCharFound = 11,
    IllegalCharFound = 12,
    InvalidTableFormat = 13,
    InvalidTableFile = 14,
    BufferOverflowError = 15,
    UnsupportedError = 16,
    ResourceTypeMismatch = 17,
    IllegalEscapeSequence = 18,
    UnsupportedEscapeSequence = 19,
    NoSpaceAvailable = 20,
    CeNotFoundError = 21,
    PrimaryTooLongError = 22,
    StateTooOldError = 23,
    TooManyAliasesError = 24,
    EnumOutOfSyncError = 25,
    InvariantConversionError = 26,
    InvalidStateError = 27,
    CollatorVersionMismatch = 28,
    UselessCollatorError = 29,
    NoWritePermission = 30,
    InputTooLongError = 31,
    BadVariableDefinition = 0x10000, ///< from here on: rules of transliterators
    MalformedRule = 0x10001,
    MalformedSet = 0x10002,
    MalformedUnicodeEscape = 0x10004,
    MalformedVariableDefinition = 0x10005,
    MalformedVariableReference = 0x10006,
    MisplacedAnchorStart = 0x10008,
    MisplacedCursorOffset = 0x10009,
    MisplacedQuantifier = 0x1000A,
    MissingOperator = 0x1000B,
    MultipleAnteContexts = 0x1000D,
    MultipleCursors = 0x1000E,
    MultiplePostContexts = 0x1000F,
    TrailingBackslash = 0x10010,
    UndefinedSegmentReference = 0x10011,
    UndefinedVariable = 0x10012,
    UnquotedSpecial = 0x10013,
    UnterminatedQuote = 0x10014,
    RuleMaskError = 0x10015,
    MisplacedCompoundFilter = 0x10016,
    MultipleCompoundFilters = 0x10017,
    InvalidRBTSyntax = 0x10018,
    MalformedPragma = 0x1001A,
    UnclosedSegment = 0x1001B,
    VariableRangeExhausted = 0x1001D,
    VariableRangeOverlap = 0x1001E,
    IllegalCharacter = 0x1001F,
    InternalTransliteratorError = 0x10020,
    InvalidId = 0x10021,
    InvalidFunction = 0x10022,
    UnexpectedToken = 0x10100, ///< from here on: patterns of numbers, dates and messages
    MultipleDecimalSeparators = 0x10101,
    MultipleExponentialSymbols = 0x10102,
    MalformedExponentialPattern = 0x10103,
    MultiplePercentSymbols = 0x10104,
    MultiplePermillSymbols = 0x10105,
    MultiplePadSpecifiers = 0x10106,
    PatternSyntaxError = 0x10107,
    IllegalPadPosition = 0x10108,
    UnmatchedBraces = 0x10109,
    UnsupportedProperty = 0x1010A,
    UnsupportedAttribute = 0x1010B,
    ArgumentTypeMismatch = 0x1010C,
    DuplicateKeyword = 0x1010D,
    UndefinedKeyword = 0x1010E,
    DefaultKeywordMissing = 0x1010F,
    DecimalNumberSyntaxError = 0x10110,
    FormatInexactError = 0x10111,
    NumberArgOutOfBounds = 0x10112,
    NumberSkeletonSyntaxError = 0x10113,
    BreakInternalError = 0x10200, ///< from here on: rules of break iterators
    BreakHexDigitsExpected = 0x10201,
    BreakSemicolonExpected = 0x10202,
    BreakRuleSyntax = 0x10203,
    BreakUnclosedSet = 0x10204,
    BreakAssignError = 0x10205,
    BreakVariableRedefinition = 0x10206,
    BreakMismatchedParen = 0x10207,
    BreakNewLineInQuotedString = 0x10208,
    BreakUndefinedVariable = 0x10209,
    BreakInitError = 0x1020A,
    BreakRuleEmptySet = 0x1020B,
    BreakUnrecognizedOption = 0x1020C,
    BreakMalformedRuleTag = 0x1020D,
    RegexInternalError = 0x10300, ///< from here on: regular expressions
    RegexRuleSyntax = 0x10301,
    RegexInvalidState = 0x10302,
    RegexBadEscapeSequence = 0x10303,
    RegexPropertySyntax = 0x10304,
    RegexUnimplemented = 0x10305,
    RegexMismatchedParen = 0x10306,
    RegexNumberTooBig = 0x10307,
    RegexBadInterval = 0x10308,
    RegexMaxLtMin = 0x10309,
    RegexInvalidBackReference = 0x1030A,
    RegexInvalidFlag = 0x1030B,
    RegexLookBehindLimit = 0x1030C,
    RegexSetContainsString = 0x1030D,
    RegexMissingCloseBracket = 0x1030F,
    RegexInvalidRange = 0x10310,
    RegexStackOverflow = 0x10311,
    RegexTimeOut = 0x10312,
    RegexStoppedByCaller = 0x10313,
    RegexPatternTooBig = 0x10314,
    RegexInvalidCaptureGroupName = 0x10315,
};

/// code <= 0: warnings count as success.
[[nodiscard]] constexpr bool ICU_SUCCESS(ICUErrorCode code) noexcept
{
    return static_cast<int>(code) <= 0;
}
/// code > 0.
[[nodiscard]] constexpr bool ICU_FAILURE(ICUErrorCode code) noexcept
{
    return static_cast<int>(code) > 0;
}

/// The direction of a transliterator.
enum class ICUTransDirection : int { Forward = 0, Reverse = 1 };

/// What of a collator can be set.
enum class ICUColAttribute : int {
    FrenchCollation = 0,
    AlternateHandling = 1,
    CaseFirst = 2,
    CaseLevel = 3,
    NormalizationMode = 4,
    Strength = 5,
    HiraganaQuaternaryMode = 6,
    NumericCollation = 7,
};

/// The values of ICUColAttribute; which go with which attribute is as in ICU.
enum class ICUColAttributeValue : int {
    Default = -1,
    Primary = 0,
    Secondary = 1,
    Tertiary = 2,
    Quaternary = 3,
    Identical = 15,
    Off = 16,
    On = 17,
    Shifted = 20,
    NonIgnorable = 21,
    LowerFirst = 24,
    UpperFirst = 25,
};

/// How one text sorts beside another.
enum class ICUCollationResult : int { Less = -1, Equal = 0, Greater = 1 };

/// Flags of regular expressions; they are combined with |.
enum ICURegexpFlag : unsigned {
    ICURegexUnixLines = 1,
    ICURegexCaseInsensitive = 2,
    ICURegexComments = 4,
    ICURegexMultiline = 8,
    ICURegexLiteral = 16,
    ICURegexDotAll = 32,
    ICURegexCanonEq = 128, ///< not implemented by ICU: RegexUnimplemented
    ICURegexUWord = 256,
    ICURegexErrorOnUnknownEscapes = 512,
};

/// The symbols that numbers are written with.
enum class ICUNumberFormatSymbol : int {
    DecimalSeparator = 0,
    GroupingSeparator = 1,
    PatternSeparator = 2,
    Percent = 3,
    ZeroDigit = 4,
    Digit = 5,
    MinusSign = 6,
    PlusSign = 7,
    Currency = 8,
    IntlCurrency = 9,
    MonetarySeparator = 10,
    Exponential = 11,
    PerMill = 12,
    PadEscape = 13,
    Infinity = 14,
    NaN = 15,
    SignificantDigit = 16,
    MonetaryGroupingSeparator = 17,
    OneDigit = 18,
    TwoDigit = 19,
    ThreeDigit = 20,
    FourDigit = 21,
    FiveDigit = 22,
    SixDigit = 23,
    SevenDigit = 24,
    EightDigit = 25,
    NineDigit = 26,
    ExponentMultiplication = 27,
};

/// What kind of number format to open.
enum class ICUNumberFormatStyle : int {
    PatternDecimal = 0,
    Decimal = 1,
    Currency = 2,
    Percent = 3,
    Scientific = 4,
    SpellOut = 5,
    Ordinal = 6,
    Duration = 7,
    NumberingSystem = 8,
    PatternRuleBased = 9,
    CurrencyIso = 10,
    CurrencyPlural = 11,
    CurrencyAccounting = 12,
    CashCurrency = 13,
    DecimalCompactShort = 14,
    DecimalCompactLong = 15,
    CurrencyStandard = 16,
};

/// The texts of a number format that can be read and set.
enum class ICUNumberFormatTextAttribute : int {
    PositivePrefix = 0,
    PositiveSuffix = 1,
    NegativePrefix = 2,
    NegativeSuffix = 3,
    PaddingCharacter = 4,
    CurrencyCode = 5,
    DefaultRuleset = 6,
    PublicRulesets = 7,
};

/// The numbers of a number format that can be read and set.
enum class ICUNumberFormatAttribute : int {
    ParseIntOnly = 0,
    GroupingUsed = 1,
    DecimalAlwaysShown = 2,
    MaxIntegerDigits = 3,
    MinIntegerDigits = 4,
    IntegerDigits = 5,
    MaxFractionDigits = 6,
    MinFractionDigits = 7,
    FractionDigits = 8,
    Multiplier = 9,
    GroupingSize = 10,
    RoundingMode = 11,
    RoundingIncrement = 12,
    FormatWidth = 13,
    PaddingPosition = 14,
    SecondaryGroupingSize = 15,
    SignificantDigitsUsed = 16,
    MinSignificantDigits = 17,
    MaxSignificantDigits = 18,
    LenientParse = 19,
    ParseAllInput = 20,
    Scale = 21,
    MinimumGroupingDigits = 22,
    CurrencyUsage = 23,
};

/// How numbers are rounded to the digits shown.
enum class ICURoundingMode : int {
    Ceiling = 0,
    Floor = 1,
    Down = 2,
    Up = 3,
    HalfEven = 4,
    HalfDown = 5,
    HalfUp = 6,
    Unnecessary = 7,
    HalfOdd = 8,
    HalfCeiling = 9,
    HalfFloor = 10,
};

/// Forms of normalisation.
enum class ICUNormalization : int { None = 1, NFD = 2, NFKD = 3, NFC = 4, NFKC = 5, FCD = 6 };

/// Whether a text is normalised; Maybe wants a closer look.
enum class ICUNormalizationCheckResult : int { No = 0, Yes = 1, Maybe = 2 };

/// Which of the locales that play a part in a resource.
enum class ICULocDataLocaleType : int { Actual = 0, Valid = 1 };

/// What a break iterator looks for.
enum class ICUBreakIteratorType : int { Character = 0, Word = 1, Line = 2, Sentence = 3, Title = 4 };

/// Why a converter calls back.
enum class ICUConverterCallbackReason : int {
    Unassigned = 0,
    Illegal = 1,
    Irregular = 2,
    Reset = 3,
    Close = 4,
    Clone = 5
};

/// Where in a pattern or in rules an error is, for the functions that parse them.
struct ICUParseError
{
    std::int32_t line = 0;         ///< counted from 1 where ICU counts lines, else 0 or -1
    std::int32_t offset = -1;      ///< units from the start of the line (of the text, without lines)
    char16_t preContext[16] = {};  ///< the text before, terminated
    char16_t postContext[16] = {}; ///< the text at and after, terminated
};

// Opaque handles. What opens one is closed by its own function; IcuHandles.h has owners.
struct ICU_Collator;
struct ICUBreakIterator;
struct ICUCharacterIterator;
struct ICUCharsetDetector;
struct ICUCharsetMatch;
struct ICUCodePointMap;
struct ICUCollationElements;
struct ICUConverter;
struct ICUConverterSelector;
struct ICUEnumeration;
struct ICUFieldPositionIterator;
struct ICUFormattable;
struct ICUFromUnicodeArgs;
struct ICUNormalizer2;
struct ICUNumberFormat;
struct ICURegularExpression;
struct ICUSet;
struct ICUStringSearch;
struct ICUText;
struct ICUToUnicodeArgs;
struct UCaseMap;

} // namespace QvxICU
