#pragma once
// Texts to measure conversions with.

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace bench {

struct Text
{
    std::string kind;
    std::string utf8;
    std::u16string utf16; ///< what `utf8` decodes to
    std::u32string utf32;
};

/// ASCII, French, Cyrillic, CJK and emoji, each about `bytes` of UTF-8, whole code points. From the folder that the
/// environment variable QVXSYS_BENCH_TEXT names (the file names are in BenchText.cpp), otherwise made by shuffling
/// pieces of the tree's sample texts, always in the same way. Ends the program when a text cannot be read.
std::vector<Text> WellFormedTexts(std::size_t bytes);

/// The text with every `distance`th byte made 0xFF.
Text Damaged(Text const& text, std::size_t distance);

} // namespace bench
