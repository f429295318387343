#pragma once
// Constants of the vector encoders, for each 32 bits of a vector, read from memory. They are defined in a source of
// their own so that the compiler does not know their values: what GCC 12 knows, it builds in a general register and
// moves over anew for every block, on the execution port that the shuffles need.

namespace qvxsys::text::avx2 {

struct EncodeConstants
{
    unsigned notAscii = 0xFF80FF80;
    unsigned notSmall = 0xF800F800; // bits of units of three bytes, and of surrogates
    unsigned surrogate = 0xD800D800;
    unsigned half = 0xFC00FC00; // the bits that tell the halves of pairs
    unsigned low = 0xDC00DC00;
    unsigned pair = 0xDC00D800;
    unsigned replacement = 0xFFFDFFFD;
    unsigned highBase = 0xD7C0D7C0;
    unsigned highRest = 0x00030003;
    unsigned lowBits = 0x03FF03FF;
    unsigned pairFactors = 0x00010400;
    unsigned pairBase = 0x00010000;
    unsigned upperSix = 0x3F003F00;
    unsigned lowerSix = 0x003F003F;
    unsigned upperFour = 0x0F000F00;
    unsigned lead3 = 0xE000E000;
    unsigned wordTags2 = 0x80C080C0; // the first byte of a unit is the lower one
    unsigned wordTagsTrail = 0x80808080;
    unsigned two = 0x00400040;  // turns trail tags into tags of a unit of two bytes
    unsigned high = 0x00700070; // and into those of the first half of a pair
    unsigned fourthSix = 0x3F000000;
    unsigned thirdSix = 0x003F0000;
    unsigned secondSix = 0x00003F00;
    unsigned tags2 = 0x80C00000;
    unsigned tags3 = 0x8080E000;
    unsigned tags4 = 0x808080F0;
};

extern EncodeConstants const encodeConstants;

} // namespace qvxsys::text::avx2

namespace qvxsys::text::avx512 {

struct EncodeConstants
{
    unsigned notAscii = 0xFF80FF80;
    unsigned notSmall = 0xF800F800; // bits of units of three bytes, and of surrogates
    unsigned surrogate = 0xD800D800;
    unsigned isLow = 0x04000400;
    unsigned replacement = 0xFFFDFFFD;
    unsigned highBase = 0xD7C0D7C0;
    unsigned highRest = 0x00030003;
    unsigned lowBits = 0x03FF03FF;
    unsigned sixBits = 0x3F3F3F3F;
    unsigned firstBytes = 0x00FF00FF;
    unsigned lastByte = 0xFF000000;
    unsigned wordTags2 = 0x80C080C0; // the first byte of a unit is the lower one
    unsigned wordTagsHigh = 0x80F080F0;
    unsigned wordTagsTrail = 0x80808080;
    unsigned tags2 = 0x80C00000;
    unsigned tags3 = 0x8080E000;
    unsigned tags4 = 0x808080F0;
    unsigned lead3 = 0x0000E000;
};

extern EncodeConstants const encodeConstants;

} // namespace qvxsys::text::avx512
