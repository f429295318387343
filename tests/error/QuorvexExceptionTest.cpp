// Codes, exceptions and their message stacks.

#include <list>
#include <memory>
#include <stdexcept>
#include <typeinfo>

#include "support/TextPrinters.h"

namespace {

using TError::ErrorInfo;
using Texts = std::vector<TStringCore>;

static_assert(!std::is_convertible_v<QuorvexException*, std::exception*>);
static_assert(sizeof(QuorvexException) == 5 * sizeof(void*));
static_assert(sizeof(LogicException) == sizeof(QuorvexException) + sizeof(TStringCore));
static_assert(sizeof(TError::ErrorSource) == 4);
static_assert(std::is_copy_assignable_v<ErrorInfo> && !std::is_default_constructible_v<ErrorInfo>);

ErrorInfo Info(unsigned int code = 7, int source = 42)
{
    return {QuorvexError::MakeError(code, u"Code"), static_cast<TError::ErrorSource>(source)};
}

/// All messages, and the redacted ones.
using Stacks = std::pair<Texts, Texts>;

Stacks StacksOf(QuorvexException const& e)
{
    return {e.GetMessagesVector(), {e.GetRedactedMessages().begin(), e.GetRedactedMessages().end()}};
}

TFormatStringCore Literally(TStringCore const& text)
{
    return TFormatStringCore(u"%1").arg(text);
}

template<class E>
std::unique_ptr<QuorvexException> CloneOf(E const& e)
{
    return std::unique_ptr<QuorvexException>(e.Clone());
}

std::type_info const& ClassOf(QuorvexException const& e)
{
    return typeid(e);
}

/// What Throw() throws, told by its exact class.
template<class E>
std::string ThrownBy(E const& e)
{
    try {
        e.Throw();
    } catch (QuorvexException const& thrown) {
        EXPECT_EQ(&thrown.GetErrorInfo(), &e.GetErrorInfo());
        EXPECT_EQ(StacksOf(thrown), StacksOf(e));
        return typeid(thrown).name();
    }
    return "nothing";
}

TEST(ErrorInfo, KeepsTheCause)
{
    EXPECT_EQ(ErrorInfo::NoError().source, 3);
    EXPECT_EQ(ErrorInfo::TestError().source, 5);
    EXPECT_EQ(ErrorInfo::TestError().error, QuorvexError::NoError());
    QuorvexException const root(u"root", Info(0xFFFFFFFF, 9));
    QuorvexException const middle(u"middle", ErrorInfo(QuorvexError::MakeError(2, u"b"), root));
    ErrorInfo const outer(QuorvexError::MakeError(3, u"c"), middle);
    EXPECT_EQ(outer.source, 9);
    EXPECT_EQ(ErrorInfo(QuorvexError::NoError(), middle, TError::SourceTest).source, TError::SourceTest);
    ASSERT_NE(outer.inner, nullptr);
    // A copy of the cause's record, but not of what that points to.
    EXPECT_NE(outer.inner.get(), &middle.GetErrorInfo());
    EXPECT_EQ(outer.inner->error.GetCode(), 2u);
    EXPECT_EQ(outer.inner->inner, middle.GetErrorInfo().inner);
    EXPECT_EQ(outer.inner->inner->error.GetCode(), 0xFFFFFFFF);
    ErrorInfo copy = outer;
    ErrorInfo const& same = copy;
    copy = same;
    EXPECT_EQ(copy.inner, outer.inner);
}

TEST(QuorvexException, Constructors)
{
    std::list<TStringCore> const two = {u"a", u""};
    auto const shared = std::make_shared<ErrorInfo>(Info());
    std::runtime_error const standard("what");
    QuorvexError const code = QuorvexError::MakeError(7, u"Code");
    struct
    {
        char const* name;
        QuorvexException e;
        Texts messages, redacted;
        bool hasInfo;
    } const cases[] = {
        {"none", QuorvexException(), {}, {}, false},
        {"info", QuorvexException(Info()), {}, {}, true},
        {"list", QuorvexException(two), {u"a", u""}, {}, false},
        {"list, shared", QuorvexException(two, shared), {u"a", u""}, {}, true},
        {"list braces, info", QuorvexException({u"a"}, Info()), {u"a"}, {}, true},
        {"list braces, shared", QuorvexException({u"a", u"b"}, shared), {u"a", u"b"}, {}, true},
        {"out of memory", QuorvexOutOfMemoryException({u"a"}, Info()), {u"a"}, {}, true},
        {"format in braces", QuorvexException{Literally(u"f")}, {u"f"}, {u"f"}, false},
        {"empty text", QuorvexException(TStringCore()), {}, {}, false},
        {"literal", QuorvexException(u"%9"), {u"%9"}, {}, false},
        {"wide literal", QuorvexException(L"w", Info()), {u"w"}, {}, true},
        {"UTF-8, shared", QuorvexException("\xC3\xA9", shared), {u"\u00E9"}, {}, true},
        {"braces", QuorvexException(u"t", {code, TError::ErrorSource(42)}), {u"t"}, {}, true},
        {"format", QuorvexException(Literally(u"f")), {u"f"}, {u"f"}, false},
        {"format, info", QuorvexException(Literally(u"f"), Info()), {u"f"}, {u"f"}, true},
        {"format, shared", QuorvexException(Literally(u"f"), shared), {u"f"}, {u"f"}, true},
        {"empty format", QuorvexException(Literally(u"")), {}, {}, false},
        {"standard", QuorvexException(standard), {u"what"}, {}, false},
        {"standard, info", QuorvexException(standard, Info()), {u"what"}, {}, true},
        {"standard, empty", QuorvexException(std::runtime_error("")), {}, {}, false},
        {"null pointer", QuorvexException(u"t", std::shared_ptr<ErrorInfo>()), {u"t"}, {}, false},
    };
    for (auto const& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(StacksOf(c.e), Stacks(c.messages, c.redacted));
        EXPECT_EQ(c.e.GetErrorCode(), c.hasInfo ? 7u : 0u);
        EXPECT_EQ(c.e.GetErrorName(), c.hasInfo ? u"Code" : u"");
        EXPECT_EQ(c.e.GetErrorSource(), c.hasInfo ? 42 : 3);
        EXPECT_EQ(&c.e.GetError(), &c.e.GetErrorInfo().error);
    }
    EXPECT_EQ(&QuorvexException(two, shared).GetErrorInfo(), shared.get());
    EXPECT_EQ(&QuorvexException(u"t", shared).GetErrorInfo(), shared.get());
    EXPECT_EQ(&QuorvexException(Literally(u"f"), shared).GetErrorInfo(), shared.get());
}

TEST(QuorvexException, CopiesShareTheErrorInfoOnly)
{
    QuorvexException const original(Literally(u"x"), Info());
    QuorvexException copy(original);
    QuorvexException assigned;
    assigned = original;
    for (QuorvexException* e : {&copy, &assigned}) {
        EXPECT_EQ(&e->GetErrorInfo(), &original.GetErrorInfo());
        EXPECT_EQ(StacksOf(*e), StacksOf(original));
        e->SetMessage(u"y");
        EXPECT_EQ(StacksOf(original), Stacks({u"x"}, {u"x"}));
    }
    QuorvexException const& same = copy;
    copy = same;
    EXPECT_EQ(copy.GetMessagesVector(), Texts{u"y"});
}

TEST(QuorvexException, MessageStack)
{
    QuorvexException e;
    EXPECT_EQ(e.GetMessagesFront(), u"");
    EXPECT_EQ(e.GetConcatenatedMessages(), u"");
    e.StackMessage(Literally(u"x"));
    e.StackMessage(TStringCore(u"y"));
    e.StackMessageFront(u"front");
    e.StackMessageFront(Literally(u"both"));
    for (TStringCore const& empty : {TStringCore(), TStringCore(u"")}) {
        e.StackMessage(empty);
        e.StackMessageFront(empty);
        e.StackMessage(Literally(empty));
        e.StackMessageFront(Literally(empty));
    }
    EXPECT_EQ(StacksOf(e), Stacks({u"both", u"front", u"x", u"y"}, {u"both", u"x"}));
    EXPECT_EQ(e.GetMessagesFront(), u"both");
    e.ClearMessages();
    EXPECT_EQ(StacksOf(e), Stacks({}, {u"both", u"x"}));
    e.SetMessage(Literally(u"z"));
    EXPECT_EQ(StacksOf(e), Stacks({u"z"}, {u"z"}));
    e.SetMessage(TStringCore());
    EXPECT_EQ(StacksOf(e), Stacks());
    EXPECT_THROW(e.StackMessage(TFormatStringCore(u"%1")), TFormatStringCore::Exception);
    QuorvexException const lines(std::list<TStringCore>{u"a", u"b\n", u"", u"\n", u"c\n\n"});
    EXPECT_EQ(lines.GetConcatenatedMessages(), u"a\nb\n\n\nc\n\n");
    struct Overriding : QuorvexException
    {
        using QuorvexException::QuorvexException;
        TStringCore GetConcatenatedMessages() const override { return u"other"; }
    };
    EXPECT_EQ(Overriding(lines.GetMessagesFront()).CollateMessagesForLog(), u"a\n") << "what the base logs is its own";
    TStringCore out = u"old";
    QuorvexException::ToString(std::logic_error("x"), out);
    EXPECT_EQ(out, u"x");
}

TEST(QuorvexException, CloneAndThrowKeepTheClassWhereItSaysSo)
{
    ErrorInfo const info = Info();
    auto const check = [](auto e, std::type_info const& kept) {
        SCOPED_TRACE(kept.name());
        e.StackMessage(Literally(u"more"));
        auto const clone = CloneOf(e);
        EXPECT_EQ(ClassOf(*clone), kept);
        EXPECT_EQ(ThrownBy(e), kept.name());
        EXPECT_EQ(&clone->GetErrorInfo(), &e.GetErrorInfo());
        EXPECT_EQ(StacksOf(*clone), StacksOf(e));
    };
    check(QuorvexException(u"m", info), typeid(QuorvexException));
    check(QuorvexUserErrorException(u"m", info), typeid(QuorvexException));
    check(QuorvexUserErrorException(Literally(u"m"), info), typeid(QuorvexException));
    check(TFormatStringCore::Exception(u"m", info), typeid(QuorvexException));
    check(TScanStringCore::Exception(u"m", info), typeid(TScanStringCore::Exception));
    check(LogicException(u"m", info), typeid(LogicException));
    EXPECT_EQ(ThrownBy(QuorvexOutOfMemoryException(u"m", info)), typeid(QuorvexOutOfMemoryException).name());
}

TEST(QuorvexOutOfMemoryException, CloneIsFresh)
{
    EXPECT_EQ(QuorvexOutOfMemoryException(Info()).GetMessagesVector(), Texts{u"Out of memory"});
    QuorvexOutOfMemoryException e(std::list<TStringCore>{u"a", u"b"}, Info());
    e.StackMessage(Literally(u"c"));
    EXPECT_EQ(StacksOf(e), Stacks({u"a", u"b", u"c"}, {u"c"}));
    auto const clone = CloneOf(e);
    EXPECT_EQ(ClassOf(*clone), typeid(QuorvexOutOfMemoryException));
    EXPECT_EQ(StacksOf(*clone), Stacks({u"Out of memory"}, {}));
    EXPECT_EQ(clone->GetErrorCode(), 0x2A6E0D79u);
    EXPECT_EQ(clone->GetErrorName(), u"QuorvexException_AutoGen_0x2A6E0D79");
    EXPECT_EQ(clone->GetErrorSource(), 4);
}

TEST(StackExceptionAndRethrow, StacksOnOurExceptionsOnly)
{
    QuorvexException const* first = nullptr;
    try {
        try {
            try {
                throw TScanStringCore::Exception(u"inner", Info());
            } catch (QuorvexException const& e) {
                first = &e;
                StackExceptionAndRethrow(Literally(u"both"));
            }
        } catch (...) {
            StackExceptionAndRethrow(u"plain");
        }
    } catch (TScanStringCore::Exception const& e) {
        EXPECT_EQ(&e, first); // that very object
        EXPECT_EQ(StacksOf(e), Stacks({u"inner", u"both", u"plain"}, {u"both"}));
    }
    try {
        try {
            throw std::out_of_range("x");
        } catch (...) {
            StackExceptionAndRethrow(u"plain");
        }
    } catch (std::out_of_range const& e) {
        EXPECT_STREQ(e.what(), "x");
    }
}

} // namespace
