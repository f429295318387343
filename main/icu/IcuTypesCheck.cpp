// No code: every enumerator and every structure of the layer's own is ICU's, by value, size and place.

#include <cstddef>

#include <unicode/parseerr.h>
#include <unicode/ubrk.h>
#include <unicode/uchar.h>
#include <unicode/ucnv.h>
#include <unicode/ucol.h>
#include <unicode/ucpmap.h>
#include <unicode/ucurr.h>
#include <unicode/udisplaycontext.h>
#include <unicode/uformattable.h>
#include <unicode/uiter.h>
#include <unicode/uloc.h>
#include <unicode/unorm.h>
#include <unicode/unorm2.h>
#include <unicode/unum.h>
#include <unicode/uregex.h>
#include <unicode/usearch.h>
#include <unicode/uset.h>
#include <unicode/ustring.h>
#include <unicode/utrans.h>

#include <qvxsys/IcuFunctions.h>
#include <qvxsys/QvxICU.h>

namespace QvxICU {
namespace {

// Own enumerator, ICU's, own, ICU's, ...
template<class Own, class Theirs, class... More>
consteval bool Same(Own own, Theirs theirs, More... more)
{
    if constexpr (sizeof...(More) > 0) {
        static_assert(requires { Same<Own, Theirs>(more...); });
        if (!Same<Own, Theirs>(more...)) {
            return false;
        }
    }
    return static_cast<std::int64_t>(own) == static_cast<std::int64_t>(theirs);
}

static_assert([] {
    using enum ICUProperty;
    return Same<ICUProperty, UProperty>(
        Alphabetic, UCHAR_ALPHABETIC, AsciiHexDigit, UCHAR_ASCII_HEX_DIGIT, BidiControl, UCHAR_BIDI_CONTROL,
        BidiMirrored, UCHAR_BIDI_MIRRORED, Dash, UCHAR_DASH, DefaultIgnorableCodePoint,
        UCHAR_DEFAULT_IGNORABLE_CODE_POINT, Deprecated, UCHAR_DEPRECATED, Diacritic, UCHAR_DIACRITIC, Extender,
        UCHAR_EXTENDER, FullCompositionExclusion, UCHAR_FULL_COMPOSITION_EXCLUSION, GraphemeBase, UCHAR_GRAPHEME_BASE,
        GraphemeExtend, UCHAR_GRAPHEME_EXTEND, GraphemeLink, UCHAR_GRAPHEME_LINK, HexDigit, UCHAR_HEX_DIGIT, Hyphen,
        UCHAR_HYPHEN, IdContinue, UCHAR_ID_CONTINUE, Ideographic, UCHAR_IDEOGRAPHIC, IdsBinaryOperator,
        UCHAR_IDS_BINARY_OPERATOR, IdsTrinaryOperator, UCHAR_IDS_TRINARY_OPERATOR, JoinControl, UCHAR_JOIN_CONTROL,
        LogicalOrderException, UCHAR_LOGICAL_ORDER_EXCEPTION, Lowercase, UCHAR_LOWERCASE, Math, UCHAR_MATH,
        NoncharacterCodePoint, UCHAR_NONCHARACTER_CODE_POINT, QuotationMark, UCHAR_QUOTATION_MARK, Radical,
        UCHAR_RADICAL, SoftDotted, UCHAR_SOFT_DOTTED, TerminalPunctuation, UCHAR_TERMINAL_PUNCTUATION, UnifiedIdeograph,
        UCHAR_UNIFIED_IDEOGRAPH, Uppercase, UCHAR_UPPERCASE, WhiteSpace, UCHAR_WHITE_SPACE, XidContinue,
        UCHAR_XID_CONTINUE, CaseSensitive, UCHAR_CASE_SENSITIVE, STerm, UCHAR_S_TERM, VariationSelector,
        UCHAR_VARIATION_SELECTOR, NfdInert, UCHAR_NFD_INERT, NfkdInert, UCHAR_NFKD_INERT, NfcInert, UCHAR_NFC_INERT,
        NfkcInert, UCHAR_NFKC_INERT, SegmentStarter, UCHAR_SEGMENT_STARTER, PatternSyntax, UCHAR_PATTERN_SYNTAX,
        PatternWhiteSpace, UCHAR_PATTERN_WHITE_SPACE, PosixAlnum, UCHAR_POSIX_ALNUM, PosixBlank, UCHAR_POSIX_BLANK,
        PosixGraph, UCHAR_POSIX_GRAPH, PosixPrint, UCHAR_POSIX_PRINT, PosixXDigit, UCHAR_POSIX_XDIGIT, Cased,
        UCHAR_CASED, CaseIgnorable, UCHAR_CASE_IGNORABLE, ChangesWhenLowercased, UCHAR_CHANGES_WHEN_LOWERCASED,
        ChangesWhenUppercased, UCHAR_CHANGES_WHEN_UPPERCASED, ChangesWhenTitlecased, UCHAR_CHANGES_WHEN_TITLECASED,
        ChangesWhenCasefolded, UCHAR_CHANGES_WHEN_CASEFOLDED, ChangesWhenCasemapped, UCHAR_CHANGES_WHEN_CASEMAPPED,
        ChangesWhenNfkcCasefolded, UCHAR_CHANGES_WHEN_NFKC_CASEFOLDED, Emoji, UCHAR_EMOJI, EmojiPresentation,
        UCHAR_EMOJI_PRESENTATION, EmojiModifier, UCHAR_EMOJI_MODIFIER, EmojiModifierBase, UCHAR_EMOJI_MODIFIER_BASE,
        EmojiComponent, UCHAR_EMOJI_COMPONENT, RegionalIndicator, UCHAR_REGIONAL_INDICATOR, PrependedConcatenationMark,
        UCHAR_PREPENDED_CONCATENATION_MARK, ExtendedPictographic, UCHAR_EXTENDED_PICTOGRAPHIC, BasicEmoji,
        UCHAR_BASIC_EMOJI, EmojiKeycapSequence, UCHAR_EMOJI_KEYCAP_SEQUENCE, RgiEmojiModifierSequence,
        UCHAR_RGI_EMOJI_MODIFIER_SEQUENCE, RgiEmojiFlagSequence, UCHAR_RGI_EMOJI_FLAG_SEQUENCE, RgiEmojiTagSequence,
        UCHAR_RGI_EMOJI_TAG_SEQUENCE, RgiEmojiZwjSequence, UCHAR_RGI_EMOJI_ZWJ_SEQUENCE, RgiEmoji, UCHAR_RGI_EMOJI,
        BidiClass, UCHAR_BIDI_CLASS, Block, UCHAR_BLOCK, CanonicalCombiningClass, UCHAR_CANONICAL_COMBINING_CLASS,
        DecompositionType, UCHAR_DECOMPOSITION_TYPE, EastAsianWidth, UCHAR_EAST_ASIAN_WIDTH, GeneralCategory,
        UCHAR_GENERAL_CATEGORY, JoiningGroup, UCHAR_JOINING_GROUP, JoiningType, UCHAR_JOINING_TYPE, LineBreak,
        UCHAR_LINE_BREAK, NumericType, UCHAR_NUMERIC_TYPE, Script, UCHAR_SCRIPT, HangulSyllableType,
        UCHAR_HANGUL_SYLLABLE_TYPE, NfdQuickCheck, UCHAR_NFD_QUICK_CHECK, NfkdQuickCheck, UCHAR_NFKD_QUICK_CHECK,
        NfcQuickCheck, UCHAR_NFC_QUICK_CHECK, NfkcQuickCheck, UCHAR_NFKC_QUICK_CHECK, LeadCanonicalCombiningClass,
        UCHAR_LEAD_CANONICAL_COMBINING_CLASS, TrailCanonicalCombiningClass, UCHAR_TRAIL_CANONICAL_COMBINING_CLASS,
        GraphemeClusterBreak, UCHAR_GRAPHEME_CLUSTER_BREAK, SentenceBreak, UCHAR_SENTENCE_BREAK, WordBreak,
        UCHAR_WORD_BREAK, BidiPairedBracketType, UCHAR_BIDI_PAIRED_BRACKET_TYPE, IndicPositionalCategory,
        UCHAR_INDIC_POSITIONAL_CATEGORY, IndicSyllabicCategory, UCHAR_INDIC_SYLLABIC_CATEGORY, VerticalOrientation,
        UCHAR_VERTICAL_ORIENTATION, GeneralCategoryMask, UCHAR_GENERAL_CATEGORY_MASK, NumericValue, UCHAR_NUMERIC_VALUE,
        Age, UCHAR_AGE, BidiMirroringGlyph, UCHAR_BIDI_MIRRORING_GLYPH, CaseFolding, UCHAR_CASE_FOLDING, IsoComment,
        UCHAR_ISO_COMMENT, LowercaseMapping, UCHAR_LOWERCASE_MAPPING, Name, UCHAR_NAME, SimpleCaseFolding,
        UCHAR_SIMPLE_CASE_FOLDING, SimpleLowercaseMapping, UCHAR_SIMPLE_LOWERCASE_MAPPING, SimpleTitlecaseMapping,
        UCHAR_SIMPLE_TITLECASE_MAPPING, SimpleUppercaseMapping, UCHAR_SIMPLE_UPPERCASE_MAPPING, TitlecaseMapping,
        UCHAR_TITLECASE_MAPPING, Unicode1Name, UCHAR_UNICODE_1_NAME, UppercaseMapping, UCHAR_UPPERCASE_MAPPING,
        BidiPairedBracket, UCHAR_BIDI_PAIRED_BRACKET, ScriptExtensions, UCHAR_SCRIPT_EXTENSIONS, InvalidCode,
        UCHAR_INVALID_CODE);
}());

static_assert([] {
    using enum ICUCharDirection;
    return Same<ICUCharDirection, UCharDirection>(
        LeftToRight, U_LEFT_TO_RIGHT, RightToLeft, U_RIGHT_TO_LEFT, EuropeanNumber, U_EUROPEAN_NUMBER,
        EuropeanNumberSeparator, U_EUROPEAN_NUMBER_SEPARATOR, EuropeanNumberTerminator, U_EUROPEAN_NUMBER_TERMINATOR,
        ArabicNumber, U_ARABIC_NUMBER, CommonNumberSeparator, U_COMMON_NUMBER_SEPARATOR, BlockSeparator,
        U_BLOCK_SEPARATOR, SegmentSeparator, U_SEGMENT_SEPARATOR, WhiteSpaceNeutral, U_WHITE_SPACE_NEUTRAL,
        OtherNeutral, U_OTHER_NEUTRAL, LeftToRightEmbedding, U_LEFT_TO_RIGHT_EMBEDDING, LeftToRightOverride,
        U_LEFT_TO_RIGHT_OVERRIDE, RightToLeftArabic, U_RIGHT_TO_LEFT_ARABIC, RightToLeftEmbedding,
        U_RIGHT_TO_LEFT_EMBEDDING, RightToLeftOverride, U_RIGHT_TO_LEFT_OVERRIDE, PopDirectionalFormat,
        U_POP_DIRECTIONAL_FORMAT, DirNonSpacingMark, U_DIR_NON_SPACING_MARK, BoundaryNeutral, U_BOUNDARY_NEUTRAL,
        FirstStrongIsolate, U_FIRST_STRONG_ISOLATE, LeftToRightIsolate, U_LEFT_TO_RIGHT_ISOLATE, RightToLeftIsolate,
        U_RIGHT_TO_LEFT_ISOLATE, PopDirectionalIsolate, U_POP_DIRECTIONAL_ISOLATE);
}());

static_assert([] {
    using enum ICUCharNameChoice;
    return Same<ICUCharNameChoice, UCharNameChoice>(UnicodeCharName, U_UNICODE_CHAR_NAME, Unicode10CharName,
                                                    U_UNICODE_10_CHAR_NAME, ExtendedCharName, U_EXTENDED_CHAR_NAME,
                                                    CharNameAlias, U_CHAR_NAME_ALIAS);
}());

static_assert([] {
    using enum ICUPropertyNameChoice;
    return Same<ICUPropertyNameChoice, UPropertyNameChoice>(ShortPropertyName, U_SHORT_PROPERTY_NAME, LongPropertyName,
                                                            U_LONG_PROPERTY_NAME);
}());

static_assert([] {
    using enum ICUWordBreakTag;
    return Same<ICUWordBreakTag, UWordBreak>(
        ICUWordNone, UBRK_WORD_NONE, ICUWordNoneLimit, UBRK_WORD_NONE_LIMIT, ICUWordNumber, UBRK_WORD_NUMBER,
        ICUWordNumberLimit, UBRK_WORD_NUMBER_LIMIT, ICUWordLetter, UBRK_WORD_LETTER, ICUWordLetterLimit,
        UBRK_WORD_LETTER_LIMIT, ICUWordKana, UBRK_WORD_KANA, ICUWordKanaLimit, UBRK_WORD_KANA_LIMIT, ICUWordIdeo,
        UBRK_WORD_IDEO, ICUWordIdeoLimit, UBRK_WORD_IDEO_LIMIT);
}());

static_assert([] {
    using enum ICULineBreakTag;
    return Same<ICULineBreakTag, ULineBreakTag>(ICULineSoft, UBRK_LINE_SOFT, ICULineSoftLimit, UBRK_LINE_SOFT_LIMIT,
                                                ICULineHard, UBRK_LINE_HARD, ICULineHardLimit, UBRK_LINE_HARD_LIMIT);
}());

static_assert([] {
    using enum ICUSentenceBreakTag;
    return Same<ICUSentenceBreakTag, USentenceBreakTag>(ICUSentenceTerm, UBRK_SENTENCE_TERM, ICUSentenceTermLimit,
                                                        UBRK_SENTENCE_TERM_LIMIT, ICUSentenceSep, UBRK_SENTENCE_SEP,
                                                        ICUSentenceSepLimit, UBRK_SENTENCE_SEP_LIMIT);
}());

static_assert([] {
    using enum ICUConverterType;
    return Same<ICUConverterType, UConverterType>(
        Unsupported, UCNV_UNSUPPORTED_CONVERTER, Sbcs, UCNV_SBCS, Dbcs, UCNV_DBCS, Mbcs, UCNV_MBCS, Latin1,
        UCNV_LATIN_1, Utf8, UCNV_UTF8, Utf16BigEndian, UCNV_UTF16_BigEndian, Utf16LittleEndian, UCNV_UTF16_LittleEndian,
        Utf32BigEndian, UCNV_UTF32_BigEndian, Utf32LittleEndian, UCNV_UTF32_LittleEndian, EbcdicStateful,
        UCNV_EBCDIC_STATEFUL, Iso2022, UCNV_ISO_2022, Lmbcs1, UCNV_LMBCS_1, Lmbcs2, UCNV_LMBCS_2, Lmbcs3, UCNV_LMBCS_3,
        Lmbcs4, UCNV_LMBCS_4, Lmbcs5, UCNV_LMBCS_5, Lmbcs6, UCNV_LMBCS_6, Lmbcs8, UCNV_LMBCS_8, Lmbcs11, UCNV_LMBCS_11,
        Lmbcs16, UCNV_LMBCS_16, Lmbcs17, UCNV_LMBCS_17, Lmbcs18, UCNV_LMBCS_18, Lmbcs19, UCNV_LMBCS_19, Hz, UCNV_HZ,
        Scsu, UCNV_SCSU, Iscii, UCNV_ISCII, UsAscii, UCNV_US_ASCII, Utf7, UCNV_UTF7, Bocu1, UCNV_BOCU1, Utf16,
        UCNV_UTF16, Utf32, UCNV_UTF32, Cesu8, UCNV_CESU8, ImapMailbox, UCNV_IMAP_MAILBOX, CompoundText,
        UCNV_COMPOUND_TEXT);
}());

static_assert([] {
    using enum ICUConverterPlatform;
    return Same<ICUConverterPlatform, UConverterPlatform>(Unknown, UCNV_UNKNOWN, Ibm, UCNV_IBM);
}());

static_assert([] {
    using enum ICUConverterUnicodeSet;
    return Same<ICUConverterUnicodeSet, UConverterUnicodeSet>(RoundtripSet, UCNV_ROUNDTRIP_SET, RoundtripAndFallbackSet,
                                                              UCNV_ROUNDTRIP_AND_FALLBACK_SET);
}());

static_assert([] {
    using enum ICUColReorderCode;
    return Same<ICUColReorderCode, UColReorderCode>(
        ICUReorderDefault, UCOL_REORDER_CODE_DEFAULT, ICUReorderNone, UCOL_REORDER_CODE_NONE, ICUReorderSpace,
        UCOL_REORDER_CODE_SPACE, ICUReorderPunctuation, UCOL_REORDER_CODE_PUNCTUATION, ICUReorderSymbol,
        UCOL_REORDER_CODE_SYMBOL, ICUReorderCurrency, UCOL_REORDER_CODE_CURRENCY, ICUReorderDigit,
        UCOL_REORDER_CODE_DIGIT);
}());

static_assert([] {
    using enum ICUColRuleOption;
    return Same<ICUColRuleOption, UColRuleOption>(TailoringOnly, UCOL_TAILORING_ONLY, FullRules, UCOL_FULL_RULES);
}());

static_assert([] {
    using enum ICUColBoundMode;
    return Same<ICUColBoundMode, UColBoundMode>(Lower, UCOL_BOUND_LOWER, Upper, UCOL_BOUND_UPPER, UpperLong,
                                                UCOL_BOUND_UPPER_LONG);
}());

static_assert([] {
    using enum ICUSearchAttribute;
    return Same<ICUSearchAttribute, USearchAttribute>(Overlap, USEARCH_OVERLAP, CanonicalMatch, USEARCH_CANONICAL_MATCH,
                                                      ElementComparison, USEARCH_ELEMENT_COMPARISON);
}());

static_assert([] {
    using enum ICUSearchAttributeValue;
    return Same<ICUSearchAttributeValue, USearchAttributeValue>(
        Default, USEARCH_DEFAULT, Off, USEARCH_OFF, On, USEARCH_ON, StandardElementComparison,
        USEARCH_STANDARD_ELEMENT_COMPARISON, PatternBaseWeightIsWildcard, USEARCH_PATTERN_BASE_WEIGHT_IS_WILDCARD,
        AnyBaseWeightIsWildcard, USEARCH_ANY_BASE_WEIGHT_IS_WILDCARD);
}());

static_assert([] {
    using enum ICUCurrencyUsage;
    return Same<ICUCurrencyUsage, UCurrencyUsage>(Standard, UCURR_USAGE_STANDARD, Cash, UCURR_USAGE_CASH);
}());

static_assert([] {
    using enum ICUCurrNameStyle;
    return Same<ICUCurrNameStyle, UCurrNameStyle>(
        SymbolName, UCURR_SYMBOL_NAME, LongName, UCURR_LONG_NAME, NarrowSymbolName, UCURR_NARROW_SYMBOL_NAME,
        FormalSymbolName, UCURR_FORMAL_SYMBOL_NAME, VariantSymbolName, UCURR_VARIANT_SYMBOL_NAME);
}());

static_assert([] {
    using enum ICUCurrencyType;
    return Same<ICUCurrencyType, UCurrCurrencyType>(ICUCurrenciesAll, UCURR_ALL, ICUCurrenciesCommon, UCURR_COMMON,
                                                    ICUCurrenciesUncommon, UCURR_UNCOMMON, ICUCurrenciesDeprecated,
                                                    UCURR_DEPRECATED, ICUCurrenciesNonDeprecated, UCURR_NON_DEPRECATED);
}());

static_assert([] {
    using enum ICUDisplayContext;
    return Same<ICUDisplayContext, UDisplayContext>(
        StandardNames, UDISPCTX_STANDARD_NAMES, DialectNames, UDISPCTX_DIALECT_NAMES, CapitalizationNone,
        UDISPCTX_CAPITALIZATION_NONE, CapitalizationForMiddleOfSentence, UDISPCTX_CAPITALIZATION_FOR_MIDDLE_OF_SENTENCE,
        CapitalizationForBeginningOfSentence, UDISPCTX_CAPITALIZATION_FOR_BEGINNING_OF_SENTENCE,
        CapitalizationForUiListOrMenu, UDISPCTX_CAPITALIZATION_FOR_UI_LIST_OR_MENU, CapitalizationForStandalone,
        UDISPCTX_CAPITALIZATION_FOR_STANDALONE, LengthFull, UDISPCTX_LENGTH_FULL, LengthShort, UDISPCTX_LENGTH_SHORT,
        Substitute, UDISPCTX_SUBSTITUTE, NoSubstitute, UDISPCTX_NO_SUBSTITUTE);
}());

static_assert([] {
    using enum ICUDisplayContextType;
    return Same<ICUDisplayContextType, UDisplayContextType>(
        DialectHandling, UDISPCTX_TYPE_DIALECT_HANDLING, Capitalization, UDISPCTX_TYPE_CAPITALIZATION, DisplayLength,
        UDISPCTX_TYPE_DISPLAY_LENGTH, SubstituteHandling, UDISPCTX_TYPE_SUBSTITUTE_HANDLING);
}());

static_assert([] {
    using enum ICUFormattableType;
    return Same<ICUFormattableType, UFormattableType>(Date, UFMT_DATE, Double, UFMT_DOUBLE, Long, UFMT_LONG, String,
                                                      UFMT_STRING, Array, UFMT_ARRAY, Int64, UFMT_INT64, Object,
                                                      UFMT_OBJECT);
}());

static_assert([] {
    using enum ICUNumberFormatField;
    return Same<ICUNumberFormatField, UNumberFormatFields>(
        ICUFieldInteger, UNUM_INTEGER_FIELD, ICUFieldFraction, UNUM_FRACTION_FIELD, ICUFieldDecimalSeparator,
        UNUM_DECIMAL_SEPARATOR_FIELD, ICUFieldExponentSymbol, UNUM_EXPONENT_SYMBOL_FIELD, ICUFieldExponentSign,
        UNUM_EXPONENT_SIGN_FIELD, ICUFieldExponent, UNUM_EXPONENT_FIELD, ICUFieldGroupingSeparator,
        UNUM_GROUPING_SEPARATOR_FIELD, ICUFieldCurrency, UNUM_CURRENCY_FIELD, ICUFieldPercent, UNUM_PERCENT_FIELD,
        ICUFieldPermill, UNUM_PERMILL_FIELD, ICUFieldSign, UNUM_SIGN_FIELD, ICUFieldMeasureUnit,
        UNUM_MEASURE_UNIT_FIELD, ICUFieldCompact, UNUM_COMPACT_FIELD, ICUFieldApproximatelySign,
        UNUM_APPROXIMATELY_SIGN_FIELD);
}());

static_assert([] {
    using enum ICUPadPosition;
    return Same<ICUPadPosition, UNumberFormatPadPosition>(
        PadBeforePrefix, UNUM_PAD_BEFORE_PREFIX, PadAfterPrefix, UNUM_PAD_AFTER_PREFIX, PadBeforeSuffix,
        UNUM_PAD_BEFORE_SUFFIX, PadAfterSuffix, UNUM_PAD_AFTER_SUFFIX);
}());

static_assert([] {
    using enum ICULayoutType;
    return Same<ICULayoutType, ULayoutType>(Ltr, ULOC_LAYOUT_LTR, Rtl, ULOC_LAYOUT_RTL, Ttb, ULOC_LAYOUT_TTB, Btt,
                                            ULOC_LAYOUT_BTT, Unknown, ULOC_LAYOUT_UNKNOWN);
}());

static_assert([] {
    using enum ICULocAvailableType;
    return Same<ICULocAvailableType, ULocAvailableType>(Default, ULOC_AVAILABLE_DEFAULT, OnlyLegacyAliases,
                                                        ULOC_AVAILABLE_ONLY_LEGACY_ALIASES, WithLegacyAliases,
                                                        ULOC_AVAILABLE_WITH_LEGACY_ALIASES);
}());

static_assert([] {
    using enum ICUAcceptResult;
    return Same<ICUAcceptResult, UAcceptResult>(Failed, ULOC_ACCEPT_FAILED, Valid, ULOC_ACCEPT_VALID, Fallback,
                                                ULOC_ACCEPT_FALLBACK);
}());

static_assert([] {
    using enum ICUNormalization2Mode;
    return Same<ICUNormalization2Mode, UNormalization2Mode>(Compose, UNORM2_COMPOSE, Decompose, UNORM2_DECOMPOSE, Fcd,
                                                            UNORM2_FCD, ComposeContiguous, UNORM2_COMPOSE_CONTIGUOUS);
}());

static_assert([] {
    using enum ICUIteratorOrigin;
    return Same<ICUIteratorOrigin, UCharIteratorOrigin>(Start, UITER_START, Current, UITER_CURRENT, Limit, UITER_LIMIT,
                                                        Zero, UITER_ZERO, Length, UITER_LENGTH);
}());

static_assert([] {
    using enum ICUSetSpanCondition;
    return Same<ICUSetSpanCondition, USetSpanCondition>(NotContained, USET_SPAN_NOT_CONTAINED, Contained,
                                                        USET_SPAN_CONTAINED, Simple, USET_SPAN_SIMPLE);
}());

static_assert([] {
    using enum ICUCodePointMapRange;
    return Same<ICUCodePointMapRange, UCPMapRangeOption>(Normal, UCPMAP_RANGE_NORMAL, FixedLeadSurrogates,
                                                         UCPMAP_RANGE_FIXED_LEAD_SURROGATES, FixedAllSurrogates,
                                                         UCPMAP_RANGE_FIXED_ALL_SURROGATES);
}());

static_assert([] {
    using enum ICUErrorCode;
    return Same<ICUErrorCode, UErrorCode>(
        UsingFallbackWarning, U_USING_FALLBACK_WARNING, UsingDefaultWarning, U_USING_DEFAULT_WARNING,
        SafeCloneAllocatedWarning, U_SAFECLONE_ALLOCATED_WARNING, StateOldWarning, U_STATE_OLD_WARNING,
        StringNotTerminatedWarning, U_STRING_NOT_TERMINATED_WARNING, SortKeyTooShortWarning,
        U_SORT_KEY_TOO_SHORT_WARNING, AmbiguousAliasWarning, U_AMBIGUOUS_ALIAS_WARNING, DifferentUcaVersion,
        U_DIFFERENT_UCA_VERSION, ZeroError, U_ZERO_ERROR, IllegalArgumentError, U_ILLEGAL_ARGUMENT_ERROR,
        MissingResourceError, U_MISSING_RESOURCE_ERROR, InvalidFormatError, U_INVALID_FORMAT_ERROR, FileAccessError,
        U_FILE_ACCESS_ERROR, InternalProgramError, U_INTERNAL_PROGRAM_ERROR, MessageParseError, U_MESSAGE_PARSE_ERROR,
        MemoryAllocationError, U_MEMORY_ALLOCATION_ERROR, IndexOutOfBoundsError, U_INDEX_OUTOFBOUNDS_ERROR, ParseError,
        U_PARSE_ERROR, InvalidCharFound, U_INVALID_CHAR_FOUND, TruncatedCharFound, U_TRUNCATED_CHAR_FOUND,
        IllegalCharFound, U_ILLEGAL_CHAR_FOUND, InvalidTableFormat, U_INVALID_TABLE_FORMAT, InvalidTableFile,
        U_INVALID_TABLE_FILE, BufferOverflowError, U_BUFFER_OVERFLOW_ERROR, UnsupportedError, U_UNSUPPORTED_ERROR,
        ResourceTypeMismatch, U_RESOURCE_TYPE_MISMATCH, IllegalEscapeSequence, U_ILLEGAL_ESCAPE_SEQUENCE,
        UnsupportedEscapeSequence, U_UNSUPPORTED_ESCAPE_SEQUENCE, NoSpaceAvailable, U_NO_SPACE_AVAILABLE,
        CeNotFoundError, U_CE_NOT_FOUND_ERROR, PrimaryTooLongError, U_PRIMARY_TOO_LONG_ERROR, StateTooOldError,
        U_STATE_TOO_OLD_ERROR, TooManyAliasesError, U_TOO_MANY_ALIASES_ERROR, EnumOutOfSyncError,
        U_ENUM_OUT_OF_SYNC_ERROR, InvariantConversionError, U_INVARIANT_CONVERSION_ERROR, InvalidStateError,
        U_INVALID_STATE_ERROR, CollatorVersionMismatch, U_COLLATOR_VERSION_MISMATCH, UselessCollatorError,
        U_USELESS_COLLATOR_ERROR, NoWritePermission, U_NO_WRITE_PERMISSION, BadVariableDefinition,
        U_BAD_VARIABLE_DEFINITION, MalformedRule, U_MALFORMED_RULE, MalformedSet, U_MALFORMED_SET,
        MalformedUnicodeEscape, U_MALFORMED_UNICODE_ESCAPE, MalformedVariableDefinition,
        U_MALFORMED_VARIABLE_DEFINITION, MalformedVariableReference, U_MALFORMED_VARIABLE_REFERENCE,
        MisplacedCursorOffset, U_MISPLACED_CURSOR_OFFSET, MissingOperator, U_MISSING_OPERATOR, TrailingBackslash,
        U_TRAILING_BACKSLASH, UndefinedSegmentReference, U_UNDEFINED_SEGMENT_REFERENCE, UndefinedVariable,
        U_UNDEFINED_VARIABLE, UnquotedSpecial, U_UNQUOTED_SPECIAL, UnterminatedQuote, U_UNTERMINATED_QUOTE,
        RuleMaskError, U_RULE_MASK_ERROR, MisplacedCompoundFilter, U_MISPLACED_COMPOUND_FILTER, InvalidRBTSyntax,
        U_INVALID_RBT_SYNTAX, UnclosedSegment, U_UNCLOSED_SEGMENT, InvalidId, U_INVALID_ID, InvalidFunction,
        U_INVALID_FUNCTION, MisplacedAnchorStart, U_MISPLACED_ANCHOR_START, MisplacedQuantifier, U_MISPLACED_QUANTIFIER,
        MultipleAnteContexts, U_MULTIPLE_ANTE_CONTEXTS, MultipleCursors, U_MULTIPLE_CURSORS, MultiplePostContexts,
        U_MULTIPLE_POST_CONTEXTS, MultipleCompoundFilters, U_MULTIPLE_COMPOUND_FILTERS, MalformedPragma,
        U_MALFORMED_PRAGMA, VariableRangeExhausted, U_VARIABLE_RANGE_EXHAUSTED, VariableRangeOverlap,
        U_VARIABLE_RANGE_OVERLAP, IllegalCharacter, U_ILLEGAL_CHARACTER, InternalTransliteratorError,
        U_INTERNAL_TRANSLITERATOR_ERROR, UnexpectedToken, U_UNEXPECTED_TOKEN, MultipleDecimalSeparators,
        U_MULTIPLE_DECIMAL_SEPARATORS, MultipleExponentialSymbols, U_MULTIPLE_EXPONENTIAL_SYMBOLS,
        MalformedExponentialPattern, U_MALFORMED_EXPONENTIAL_PATTERN, MultiplePercentSymbols,
        U_MULTIPLE_PERCENT_SYMBOLS, MultiplePermillSymbols, U_MULTIPLE_PERMILL_SYMBOLS, MultiplePadSpecifiers,
        U_MULTIPLE_PAD_SPECIFIERS, PatternSyntaxError, U_PATTERN_SYNTAX_ERROR, IllegalPadPosition,
        U_ILLEGAL_PAD_POSITION, UnmatchedBraces, U_UNMATCHED_BRACES, UnsupportedProperty, U_UNSUPPORTED_PROPERTY,
        UnsupportedAttribute, U_UNSUPPORTED_ATTRIBUTE, ArgumentTypeMismatch, U_ARGUMENT_TYPE_MISMATCH, DuplicateKeyword,
        U_DUPLICATE_KEYWORD, UndefinedKeyword, U_UNDEFINED_KEYWORD, DefaultKeywordMissing, U_DEFAULT_KEYWORD_MISSING,
        DecimalNumberSyntaxError, U_DECIMAL_NUMBER_SYNTAX_ERROR, FormatInexactError, U_FORMAT_INEXACT_ERROR,
        NumberArgOutOfBounds, U_NUMBER_ARG_OUTOFBOUNDS_ERROR, NumberSkeletonSyntaxError, U_NUMBER_SKELETON_SYNTAX_ERROR,
        BreakInternalError, U_BRK_INTERNAL_ERROR, BreakRuleSyntax, U_BRK_RULE_SYNTAX, BreakUnclosedSet,
        U_BRK_UNCLOSED_SET, BreakUndefinedVariable, U_BRK_UNDEFINED_VARIABLE, BreakHexDigitsExpected,
        U_BRK_HEX_DIGITS_EXPECTED, BreakSemicolonExpected, U_BRK_SEMICOLON_EXPECTED, BreakAssignError,
        U_BRK_ASSIGN_ERROR, BreakVariableRedefinition, U_BRK_VARIABLE_REDFINITION, BreakMismatchedParen,
        U_BRK_MISMATCHED_PAREN, BreakNewLineInQuotedString, U_BRK_NEW_LINE_IN_QUOTED_STRING, BreakInitError,
        U_BRK_INIT_ERROR, BreakRuleEmptySet, U_BRK_RULE_EMPTY_SET, BreakUnrecognizedOption, U_BRK_UNRECOGNIZED_OPTION,
        BreakMalformedRuleTag, U_BRK_MALFORMED_RULE_TAG, RegexInternalError, U_REGEX_INTERNAL_ERROR, RegexRuleSyntax,
        U_REGEX_RULE_SYNTAX, RegexInvalidState, U_REGEX_INVALID_STATE, RegexBadEscapeSequence,
        U_REGEX_BAD_ESCAPE_SEQUENCE, RegexPropertySyntax, U_REGEX_PROPERTY_SYNTAX, RegexUnimplemented,
        U_REGEX_UNIMPLEMENTED, RegexMismatchedParen, U_REGEX_MISMATCHED_PAREN, RegexNumberTooBig,
        U_REGEX_NUMBER_TOO_BIG, RegexBadInterval, U_REGEX_BAD_INTERVAL, RegexMaxLtMin, U_REGEX_MAX_LT_MIN,
        RegexInvalidBackReference, U_REGEX_INVALID_BACK_REF, RegexInvalidFlag, U_REGEX_INVALID_FLAG,
        RegexLookBehindLimit, U_REGEX_LOOK_BEHIND_LIMIT, RegexSetContainsString, U_REGEX_SET_CONTAINS_STRING,
        RegexMissingCloseBracket, U_REGEX_MISSING_CLOSE_BRACKET, RegexInvalidRange, U_REGEX_INVALID_RANGE,
        RegexStackOverflow, U_REGEX_STACK_OVERFLOW, RegexTimeOut, U_REGEX_TIME_OUT, RegexStoppedByCaller,
        U_REGEX_STOPPED_BY_CALLER, RegexPatternTooBig, U_REGEX_PATTERN_TOO_BIG, RegexInvalidCaptureGroupName,
        U_REGEX_INVALID_CAPTURE_GROUP_NAME);
}());

static_assert([] {
    using enum ICUTransDirection;
    return Same<ICUTransDirection, UTransDirection>(Forward, UTRANS_FORWARD, Reverse, UTRANS_REVERSE);
}());

static_assert([] {
    using enum ICUColAttribute;
    return Same<ICUColAttribute, UColAttribute>(
        FrenchCollation, UCOL_FRENCH_COLLATION, AlternateHandling, UCOL_ALTERNATE_HANDLING, CaseFirst, UCOL_CASE_FIRST,
        CaseLevel, UCOL_CASE_LEVEL, NormalizationMode, UCOL_NORMALIZATION_MODE, Strength, UCOL_STRENGTH,
        HiraganaQuaternaryMode, UCOL_HIRAGANA_QUATERNARY_MODE, NumericCollation, UCOL_NUMERIC_COLLATION);
}());

static_assert([] {
    using enum ICUColAttributeValue;
    return Same<ICUColAttributeValue, UColAttributeValue>(
        Default, UCOL_DEFAULT, Primary, UCOL_PRIMARY, Secondary, UCOL_SECONDARY, Tertiary, UCOL_TERTIARY, Quaternary,
        UCOL_QUATERNARY, Identical, UCOL_IDENTICAL, Off, UCOL_OFF, On, UCOL_ON, Shifted, UCOL_SHIFTED, NonIgnorable,
        UCOL_NON_IGNORABLE, LowerFirst, UCOL_LOWER_FIRST, UpperFirst, UCOL_UPPER_FIRST);
}());

static_assert([] {
    using enum ICUCollationResult;
    return Same<ICUCollationResult, UCollationResult>(Less, UCOL_LESS, Equal, UCOL_EQUAL, Greater, UCOL_GREATER);
}());

static_assert([] {
    using enum ICURegexpFlag;
    return Same<ICURegexpFlag, URegexpFlag>(
        ICURegexUnixLines, UREGEX_UNIX_LINES, ICURegexCaseInsensitive, UREGEX_CASE_INSENSITIVE, ICURegexComments,
        UREGEX_COMMENTS, ICURegexMultiline, UREGEX_MULTILINE, ICURegexLiteral, UREGEX_LITERAL, ICURegexDotAll,
        UREGEX_DOTALL, ICURegexCanonEq, UREGEX_CANON_EQ, ICURegexUWord, UREGEX_UWORD, ICURegexErrorOnUnknownEscapes,
        UREGEX_ERROR_ON_UNKNOWN_ESCAPES);
}());

static_assert([] {
    using enum ICUNumberFormatSymbol;
    return Same<ICUNumberFormatSymbol, UNumberFormatSymbol>(
        DecimalSeparator, UNUM_DECIMAL_SEPARATOR_SYMBOL, GroupingSeparator, UNUM_GROUPING_SEPARATOR_SYMBOL,
        PatternSeparator, UNUM_PATTERN_SEPARATOR_SYMBOL, Percent, UNUM_PERCENT_SYMBOL, ZeroDigit,
        UNUM_ZERO_DIGIT_SYMBOL, Digit, UNUM_DIGIT_SYMBOL, MinusSign, UNUM_MINUS_SIGN_SYMBOL, PlusSign,
        UNUM_PLUS_SIGN_SYMBOL, Currency, UNUM_CURRENCY_SYMBOL, IntlCurrency, UNUM_INTL_CURRENCY_SYMBOL,
        MonetarySeparator, UNUM_MONETARY_SEPARATOR_SYMBOL, Exponential, UNUM_EXPONENTIAL_SYMBOL, PerMill,
        UNUM_PERMILL_SYMBOL, PadEscape, UNUM_PAD_ESCAPE_SYMBOL, Infinity, UNUM_INFINITY_SYMBOL, NaN, UNUM_NAN_SYMBOL,
        SignificantDigit, UNUM_SIGNIFICANT_DIGIT_SYMBOL, MonetaryGroupingSeparator,
        UNUM_MONETARY_GROUPING_SEPARATOR_SYMBOL, OneDigit, UNUM_ONE_DIGIT_SYMBOL, TwoDigit, UNUM_TWO_DIGIT_SYMBOL,
        ThreeDigit, UNUM_THREE_DIGIT_SYMBOL, FourDigit, UNUM_FOUR_DIGIT_SYMBOL, FiveDigit, UNUM_FIVE_DIGIT_SYMBOL,
        SixDigit, UNUM_SIX_DIGIT_SYMBOL, SevenDigit, UNUM_SEVEN_DIGIT_SYMBOL, EightDigit, UNUM_EIGHT_DIGIT_SYMBOL,
        NineDigit, UNUM_NINE_DIGIT_SYMBOL, ExponentMultiplication, UNUM_EXPONENT_MULTIPLICATION_SYMBOL);
}());

static_assert([] {
    using enum ICUNumberFormatStyle;
    return Same<ICUNumberFormatStyle, UNumberFormatStyle>(
        PatternDecimal, UNUM_PATTERN_DECIMAL, Decimal, UNUM_DECIMAL, Currency, UNUM_CURRENCY, Percent, UNUM_PERCENT,
        Scientific, UNUM_SCIENTIFIC, SpellOut, UNUM_SPELLOUT, Ordinal, UNUM_ORDINAL, Duration, UNUM_DURATION,
        NumberingSystem, UNUM_NUMBERING_SYSTEM, PatternRuleBased, UNUM_PATTERN_RULEBASED, CurrencyIso,
        UNUM_CURRENCY_ISO, CurrencyPlural, UNUM_CURRENCY_PLURAL, CurrencyAccounting, UNUM_CURRENCY_ACCOUNTING,
        CashCurrency, UNUM_CASH_CURRENCY, DecimalCompactShort, UNUM_DECIMAL_COMPACT_SHORT, DecimalCompactLong,
        UNUM_DECIMAL_COMPACT_LONG, CurrencyStandard, UNUM_CURRENCY_STANDARD);
}());

static_assert([] {
    using enum ICUNumberFormatTextAttribute;
    return Same<ICUNumberFormatTextAttribute, UNumberFormatTextAttribute>(
        PositivePrefix, UNUM_POSITIVE_PREFIX, PositiveSuffix, UNUM_POSITIVE_SUFFIX, NegativePrefix,
        UNUM_NEGATIVE_PREFIX, NegativeSuffix, UNUM_NEGATIVE_SUFFIX, PaddingCharacter, UNUM_PADDING_CHARACTER,
        CurrencyCode, UNUM_CURRENCY_CODE, DefaultRuleset, UNUM_DEFAULT_RULESET, PublicRulesets, UNUM_PUBLIC_RULESETS);
}());

static_assert([] {
    using enum ICUNumberFormatAttribute;
    return Same<ICUNumberFormatAttribute, UNumberFormatAttribute>(
        ParseIntOnly, UNUM_PARSE_INT_ONLY, GroupingUsed, UNUM_GROUPING_USED, DecimalAlwaysShown,
        UNUM_DECIMAL_ALWAYS_SHOWN, MaxIntegerDigits, UNUM_MAX_INTEGER_DIGITS, MinIntegerDigits, UNUM_MIN_INTEGER_DIGITS,
        IntegerDigits, UNUM_INTEGER_DIGITS, MaxFractionDigits, UNUM_MAX_FRACTION_DIGITS, MinFractionDigits,
        UNUM_MIN_FRACTION_DIGITS, FractionDigits, UNUM_FRACTION_DIGITS, Multiplier, UNUM_MULTIPLIER, GroupingSize,
        UNUM_GROUPING_SIZE, RoundingMode, UNUM_ROUNDING_MODE, RoundingIncrement, UNUM_ROUNDING_INCREMENT, FormatWidth,
        UNUM_FORMAT_WIDTH, PaddingPosition, UNUM_PADDING_POSITION, SecondaryGroupingSize, UNUM_SECONDARY_GROUPING_SIZE,
        SignificantDigitsUsed, UNUM_SIGNIFICANT_DIGITS_USED, MinSignificantDigits, UNUM_MIN_SIGNIFICANT_DIGITS,
        MaxSignificantDigits, UNUM_MAX_SIGNIFICANT_DIGITS, LenientParse, UNUM_LENIENT_PARSE, ParseAllInput,
        UNUM_PARSE_ALL_INPUT, Scale, UNUM_SCALE, MinimumGroupingDigits, UNUM_MINIMUM_GROUPING_DIGITS, CurrencyUsage,
        UNUM_CURRENCY_USAGE);
}());

static_assert([] {
    using enum ICURoundingMode;
    return Same<ICURoundingMode, UNumberFormatRoundingMode>(
        Ceiling, UNUM_ROUND_CEILING, Floor, UNUM_ROUND_FLOOR, Down, UNUM_ROUND_DOWN, Up, UNUM_ROUND_UP, HalfEven,
        UNUM_ROUND_HALFEVEN, HalfDown, UNUM_ROUND_HALFDOWN, HalfUp, UNUM_ROUND_HALFUP, Unnecessary,
        UNUM_ROUND_UNNECESSARY, HalfOdd, UNUM_ROUND_HALF_ODD, HalfCeiling, UNUM_ROUND_HALF_CEILING, HalfFloor,
        UNUM_ROUND_HALF_FLOOR);
}());

static_assert([] {
    using enum ICUNormalization;
    return Same<ICUNormalization, UNormalizationMode>(None, UNORM_NONE, NFD, UNORM_NFD, NFKD, UNORM_NFKD, NFC,
                                                      UNORM_NFC, NFKC, UNORM_NFKC, FCD, UNORM_FCD);
}());

static_assert([] {
    using enum ICUNormalizationCheckResult;
    return Same<ICUNormalizationCheckResult, UNormalizationCheckResult>(No, UNORM_NO, Yes, UNORM_YES, Maybe,
                                                                        UNORM_MAYBE);
}());

static_assert([] {
    using enum ICULocDataLocaleType;
    return Same<ICULocDataLocaleType, ULocDataLocaleType>(Actual, ULOC_ACTUAL_LOCALE, Valid, ULOC_VALID_LOCALE);
}());

static_assert([] {
    using enum ICUBreakIteratorType;
    return Same<ICUBreakIteratorType, UBreakIteratorType>(Character, UBRK_CHARACTER, Word, UBRK_WORD, Line, UBRK_LINE,
                                                          Sentence, UBRK_SENTENCE, Title, UBRK_TITLE);
}());

static_assert([] {
    using enum ICUConverterCallbackReason;
    return Same<ICUConverterCallbackReason, UConverterCallbackReason>(Unassigned, UCNV_UNASSIGNED, Illegal,
                                                                      UCNV_ILLEGAL, Irregular, UCNV_IRREGULAR, Reset,
                                                                      UCNV_RESET, Close, UCNV_CLOSE, Clone, UCNV_CLONE);
}());

static_assert([] {
    using enum ICUCharCategory;
    return Same<ICUCharCategory, UCharCategory>(
        Unassigned, U_UNASSIGNED, UppercaseLetter, U_UPPERCASE_LETTER, LowercaseLetter, U_LOWERCASE_LETTER,
        TitlecaseLetter, U_TITLECASE_LETTER, ModifierLetter, U_MODIFIER_LETTER, OtherLetter, U_OTHER_LETTER,
        NonSpacingMark, U_NON_SPACING_MARK, EnclosingMark, U_ENCLOSING_MARK, CombiningSpacingMark,
        U_COMBINING_SPACING_MARK, DecimalDigitNumber, U_DECIMAL_DIGIT_NUMBER, LetterNumber, U_LETTER_NUMBER,
        OtherNumber, U_OTHER_NUMBER, SpaceSeparator, U_SPACE_SEPARATOR, LineSeparator, U_LINE_SEPARATOR,
        ParagraphSeparator, U_PARAGRAPH_SEPARATOR, ControlChar, U_CONTROL_CHAR, FormatChar, U_FORMAT_CHAR,
        PrivateUseChar, U_PRIVATE_USE_CHAR, Surrogate, U_SURROGATE, DashPunctuation, U_DASH_PUNCTUATION,
        StartPunctuation, U_START_PUNCTUATION, EndPunctuation, U_END_PUNCTUATION, ConnectorPunctuation,
        U_CONNECTOR_PUNCTUATION, OtherPunctuation, U_OTHER_PUNCTUATION, MathSymbol, U_MATH_SYMBOL, CurrencySymbol,
        U_CURRENCY_SYMBOL, ModifierSymbol, U_MODIFIER_SYMBOL, OtherSymbol, U_OTHER_SYMBOL, InitialPunctuation,
        U_INITIAL_PUNCTUATION, FinalPunctuation, U_FINAL_PUNCTUATION);
}());

static_assert(Same<ICUCaseOption, int>(ICUFoldCaseDefault, U_FOLD_CASE_DEFAULT, ICUFoldCaseExcludeSpecialI,
                                       U_FOLD_CASE_EXCLUDE_SPECIAL_I, ICUTitleCaseWholeString, U_TITLECASE_WHOLE_STRING,
                                       ICUTitleCaseSentences, U_TITLECASE_SENTENCES, ICUTitleCaseNoLowercase,
                                       U_TITLECASE_NO_LOWERCASE, ICUTitleCaseNoBreakAdjustment,
                                       U_TITLECASE_NO_BREAK_ADJUSTMENT, ICUTitleCaseAdjustToCased,
                                       U_TITLECASE_ADJUST_TO_CASED, ICUCompareCodePointOrder,
                                       U_COMPARE_CODE_POINT_ORDER, ICUCompareIgnoreCase, U_COMPARE_IGNORE_CASE));

static_assert(Same<ICUSetOption, int>(ICUSetIgnoreSpace, USET_IGNORE_SPACE, ICUSetCaseInsensitive,
                                      USET_CASE_INSENSITIVE, ICUSetAddCaseMappings, USET_ADD_CASE_MAPPINGS));

static_assert(static_cast<UChar32>(ICUNoCodePoint) == U_SENTINEL);

// The structures that callers own. A member out of place would move all that follow it.
template<class Own, class Theirs>
inline constexpr bool kSameShape = sizeof(Own) == sizeof(Theirs) && alignof(Own) == alignof(Theirs);

static_assert(kSameShape<ICUParseError, UParseError> &&
              offsetof(ICUParseError, preContext) == offsetof(UParseError, preContext) &&
              offsetof(ICUParseError, postContext) == offsetof(UParseError, postContext));
static_assert(kSameShape<ICUFieldSpan, UFieldPosition> &&
              offsetof(ICUFieldSpan, begin) == offsetof(UFieldPosition, beginIndex));
static_assert(kSameShape<ICUSerializedSet, USerializedSet> &&
              offsetof(ICUSerializedSet, bmpLength) == offsetof(USerializedSet, bmpLength) &&
              offsetof(ICUSerializedSet, staticArray) == offsetof(USerializedSet, staticArray));
static_assert(kSameShape<ICUCharacterIterator, UCharIterator> &&
              offsetof(ICUCharacterIterator, limit) == offsetof(UCharIterator, limit) &&
              offsetof(ICUCharacterIterator, getIndex) == offsetof(UCharIterator, getIndex) &&
              offsetof(ICUCharacterIterator, setState) == offsetof(UCharIterator, setState));

} // namespace
} // namespace QvxICU
