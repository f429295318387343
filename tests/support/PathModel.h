#pragma once
// The rules of paths on vectors of code points, each rule as it is said, however slow; and everything TPathCore does
// with a text held against them.

#include <algorithm>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <qvxsys/qvxsys.h>

namespace testing_support {

/// A path as code points; a lone surrogate is one.
class PathModel
{
public:
    using Points = std::u32string;
    static constexpr std::size_t kNone = Points::npos;

    Points t;

    explicit PathModel(Points text, bool normalize = true) : t(std::move(text))
    {
        if (normalize) {
            std::replace(t.begin(), t.end(), U'\\', U'/');
            if (t.ends_with(U'/') && t != RootPath()) {
                t.pop_back();
            }
        }
    }

    static Points FromUnits(TStringView units)
    {
        Points points;
        for (char16_t const unit : units) {
            if (CharacterUtils::IsLowSurrogate(unit) && !points.empty() && points.back() >> 10 == 0xD800 >> 10) {
                points.back() = 0x10000 + ((points.back() & 0x3FF) << 10 | (unit & 0x3FFu));
            } else {
                points += unit;
            }
        }
        return points;
    }
    static TStringCore ToUnits(Points const& points)
    {
        TStringCore units;
        for (char32_t const c : points) {
            units.append(c);
        }
        return units;
    }

    bool IsUnc() const
    {
        return t.size() >= 3 && t.starts_with(U"//") && (t[2] != U'?' || (t.size() >= 8 && IsMarker(3, U"/unc/")));
    }
    std::size_t RootNameLength() const
    {
        auto const isDrive = [this](std::size_t i) {
            return t.size() >= i + 2 && t[i + 1] == U':' && t[i] < 0x10000 &&
                   TCType::isAlpha(static_cast<char16_t>(t[i]));
        };
        if (isDrive(0)) {
            return 2;
        }
        bool const isExtended = t.starts_with(U"//?/");
        if (isExtended && isDrive(4)) {
            return 6;
        }
        std::size_t const from = isExtended && t.size() >= 8 && IsMarker(4, U"unc/") ? 8 : 2;
        return from == 8 || IsUnc() ? std::min(t.find(U'/', from), t.size()) : 0;
    }
    bool HasRootDirectory() const { return RootNameLength() < t.size() && t[RootNameLength()] == U'/'; }
    Points RootName() const { return t.substr(0, RootNameLength()); }
    Points RootPath() const { return RootName() + (HasRootDirectory() ? U"/" : U""); }

    std::size_t FilenamePosition() const
    {
        std::size_t const colon = t.find(U':');
        std::size_t const start = colon == kNone ? 0 : colon + 1;
        std::size_t const first = t.find_first_not_of(U'/', start);
        if (first == kNone) {
            return kNone;
        }
        std::size_t const last = t.rfind(U'/');
        std::size_t const position = last != kNone && last >= first ? last + 1 : first;
        return position == t.size() ? kNone : position;
    }
    Points Filename() const { return FilenamePosition() == kNone ? Points() : t.substr(FilenamePosition()); }
    std::size_t ExtensionPosition() const
    {
        std::size_t const name = FilenamePosition();
        std::size_t const dot = t.rfind(U'.');
        bool const none = name == kNone || Filename().find_first_not_of(U'.') == kNone || dot == kNone || dot <= name;
        return none ? kNone : dot + 1;
    }
    Points WithoutExtension() const { return ExtensionPosition() == kNone ? t : t.substr(0, ExtensionPosition() - 1); }
    Points Parent() const
    {
        std::size_t const name = FilenamePosition();
        if (name == kNone) {
            return t;
        }
        bool const back = HasRootDirectory() ? name > RootNameLength() + 1 : name != 0;
        return t.substr(0, back ? name - 1 : name);
    }

    std::vector<Points> Elements() const
    {
        std::vector<Points> elements;
        std::size_t const root = RootNameLength();
        for (std::size_t start = 0; start < t.size();) {
            std::size_t end = std::min(t.find(U'/', start), t.size());
            if (start == 0 && root != 0) {
                end = root;
            } else if (HasRootDirectory() && start == root) {
                end = start + 1;
            }
            elements.push_back(t.substr(start, end - start));
            if (end == t.size()) {
                break;
            }
            start = start == root || end == root ? end : t.find_first_not_of(U'/', end + 1);
        }
        return elements;
    }

private:
    bool IsMarker(std::size_t at, std::u32string_view lower) const
    {
        return std::equal(lower.begin(), lower.end(), t.begin() + static_cast<std::ptrdiff_t>(at),
                          [](char32_t l, char32_t c) { return c == l || (l >= U'a' && l <= U'z' && c + 0x20 == l); });
    }
};

/// What goes wrong with a path of these units, and with it in front of another one; "" for nothing.
class PathCheck
{
public:
    using Points = PathModel::Points;

    std::string Run(TStringView text, TStringView other = {})
    {
        TPathCore const path = text;
        PathModel const model(PathModel::FromUnits(text));
        Parts(path, model);
        Iteration(path, model);
        TPathCore const right = other;
        Points const rightText = PathModel(PathModel::FromUnits(other)).t;
        bool const separate =
            !model.t.empty() && !rightText.empty() && !model.t.ends_with(U'/') && !rightText.starts_with(U'/');
        Is("/", path / right, model.t + (separate ? U"/" : U"") + rightText);
        Is("+", path + right, PathModel(model.t + rightText).t);
        Is("+=", TPathCore(path) += right, model.t + rightText);
        Laws(path, right);
        std::ostringstream texts;
        if (!m_error.empty()) {
            texts << m_error << " of ";
            PrintTo(path, &texts);
            PrintTo(right, &texts);
        }
        return texts.str();
    }

private:
    void Expect(char const* what, bool holds)
    {
        if (!holds) {
            m_error += std::string(m_error.empty() ? "" : ", ") + what;
        }
    }
    void Is(char const* what, TStringCore const& value, Points const& expected)
    {
        Expect(what, value.view() == PathModel::ToUnits(expected).view());
    }

    void Parts(TPathCore const& path, PathModel const& model)
    {
        bool const hasExtension = model.ExtensionPosition() != PathModel::kNone;
        Is("text", path, model.t);
        Is("RootName", path.RootName(), model.RootName());
        Is("RootDirectory", path.RootDirectory(), model.HasRootDirectory() ? U"/" : U"");
        Is("RootPath", path.RootPath(), model.RootPath());
        Is("Filename", path.Filename(), model.Filename());
        Is("Stem", path.Stem(), PathModel(model.Filename(), false).WithoutExtension());
        Is("Extension", path.Extension(), hasExtension ? model.t.substr(model.ExtensionPosition()) : Points());
        Is("Parent", path.Parent(), model.Parent());
        Is("ReplaceExtension", TPathCore(path).ReplaceExtension(u"x"), model.WithoutExtension() + U".x");
        Expect("HasParentPath", path.HasParentPath() == (!model.Parent().empty() && model.Parent() != model.t));
        Expect("Is", path.IsUNC() == model.IsUnc() && path.IsRelative() == !model.HasRootDirectory() &&
                         path.IsAbsolute() == (model.HasRootDirectory() && model.RootNameLength() > 0) &&
                         path.IsExtendedLength() == model.t.starts_with(U"//?/") &&
                         path.IsDots() == (model.Filename() == U"." || model.Filename() == U".."));
    }

    void Iteration(TPathCore const& path, PathModel const& model)
    {
        std::vector<TStringCore> expected;
        for (Points const& element : model.Elements()) {
            expected.push_back(PathModel::ToUnits(element));
        }
        auto const same = [](auto const& a, auto const& b) {
            return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                              [](TStringView l, TStringView r) { return l == r; });
        };
        Expect("elements", same(path.toVector(), expected) && path.size() == expected.size());
        Expect("-- mirrors ++", same(Backward(path), expected));
        std::vector<TStringCore> const none(1), &ends = expected.empty() ? none : expected;
        Expect("front, back", path.front().view() == ends.front().view() && path.back().view() == ends.back().view());
        std::erase_if(expected, [](TStringCore const& element) { return element.empty(); });
        Expect("Elements", same(path.Elements(), expected) && same(Backward(path.Elements()), expected) &&
                               same(Hesitating(path.Elements()), expected));
    }

    template<class Range>
    static std::vector<TStringCore> Backward(Range const& range)
    {
        std::vector<TStringCore> elements;
        for (auto it = range.end(); it != range.begin();) {
            elements.push_back(*--it);
        }
        return {elements.rbegin(), elements.rend()};
    }

    template<class Range>
    static std::vector<TStringCore> Hesitating(Range const& range)
    {
        std::vector<TStringCore> elements;
        for (auto it = range.begin(); it != range.end(); ++it) {
            elements.push_back(*--++it);
        }
        return elements;
    }

    void Laws(TPathCore const& path, TPathCore const& other)
    {
        TStringView const text = path.GenericString();
        qvxsys::ExactPathEqual const same;
        bool const stays = !text.endsWith(u'/') || same(path, path.RootPath()); // when it is made a path again
        if (path.IsAbsolute() && stays) {
            TPathCore const longer = path.NativeLongPath(), shorter = path.NativeShortPath();
            Expect("long, then short", longer == path || longer.NativeShortPath() == path.NativeString());
            Expect("short, then long", shorter == path || TPathCore(shorter.NativeLongPath()) == path);
        }
        int const rootName = path.RootName().GenericString().length();
        bool const plain = text.indexOf(u"//", rootName) < 0 && (path.HasRootDirectory() || rootName == 0);
        Expect("fromVector(toVector)", !plain || !stays || same(TPathCore::fromVector(path.toVector()), path));

        TPathCore const normal = path.LexicallyNormal();
        Expect("normal form of normal form", same(normal.LexicallyNormal(), normal));
        Expect("same root", normal.RootPath() == path.RootPath());
        for (TPathCore const& base : {path, other}) {
            TPathCore const relative = path.LexicallyRelative(base);
            bool const bareName = !base.empty() && same(base.LexicallyNormal(), base.RootName());
            bool const opaque = text.startsWith(u"//?") && !path.HasRootName();
            Expect("relative", relative.empty() || bareName || opaque ||
                                   (base / relative).LexicallyNormal() == (path.empty() ? TPathCore(u".") : normal));
        }
        Expect("within itself", path.IsWithin(path));

        std::hash<TPathCore> const hash;
        TPathCore const upper = TStringCore(text).toUpper();
        Expect("equal, so one hash", path != upper || hash(path) == hash(upper));
        Expect("one order", path.Compare(other) == -other.Compare(path));
        std::string const bytes = qvxsys::detail::PathToBytes(path);
        bool const escapes = std::any_of(text.begin(), text.end(), [](char16_t c) { return (c & 0xF800) == 0xD800; });
        TPathCore const drive = path.RootName().IsUNC() ? TPathCore() : path.RootName();
        bool const colons = text.indexOf(u':', drive.GenericString().length()) >= 0 ||
                            (!drive.empty() && !path.HasRootDirectory() && !same(drive, path));
        Expect("path, bytes, path", escapes || colons || same(qvxsys::detail::PathFromBytes(bytes), path));
    }

    std::string m_error;
};

} // namespace testing_support
