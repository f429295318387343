// A program for the debugger to look at. expected.txt says what is to be seen of it.

#include <cstring>
#include <iterator>
#include <stdexcept>
#include <vector>

#include <qvxsys/qvxsys.h>

namespace {

struct HostError : QuorvexException
{
    using QuorvexException::QuorvexException;
    int m_line = 7;
};

/// Memory that is no object: all bytes the same.
template<class T>
T& Broken(unsigned char fill)
{
    void* const memory = ::operator new(sizeof(T));
    std::memset(memory, fill, sizeof(T));
    return *static_cast<T*>(memory);
}

TStringCore& WithBlock(void const* header)
{
    TStringCore& string = Broken<TStringCore>(0xFF);
    std::memcpy(static_cast<void*>(&string), &header, sizeof header);
    return string;
}

[[gnu::noinline]] void LookHere()
{
    asm volatile("");
}

char* FirstWord(void const* p)
{
    char* word;
    std::memcpy(&word, p, sizeof word);
    return word;
}

} // namespace

int main()
{
    using namespace AsyncTask;
    // Texts.
    TStringCore const empty, brief = u"Gr\u00FC\u00DFe \U0001F600", fourteen = u"12345678901234";
    TStringCore const block = u"a text of more than fourteen units", shared = block;
    char16_t const units[] = {u'a', 0, u'b', 0xD83D, u'\\', u'"', 0};
    TStringCore const odd(units, 7), long200(u'x', 200);
    TStringCore const alphabets = TStringCore(u"abcdefghijklmnopqrstuvwxyz").repeated(1000);
    TStringView const view = block.view().mid(2, 4), null;
    TStringCore::Exception const stringError(u"Out of memory");
    TFormatStringCore const format = TFormatStringCore(u"%1 of %2").arg(3).arg(u"four");
    std::vector<TStringCore> const strings = {u"one", u"two"};
    TStringCore const& reference = brief;

    // Positions.
    auto position = brief.codepoint_cbegin();
    for (int i = 0; i < 6; ++i) {
        ++position;
    }
    auto const end = brief.codepoint_cend();
    TConstCodePointIterator<TStringView> const none;
    TStringCore written = brief;
    TCodePointIterator<TStringCore> const writable(written, 6);
    TCodePointReference const codePoint = *writable;
    TCodePointView const codePoints = written.codePointView();
    auto const range = view.codePoints();
    TCodePointIterator<TStringCore> const behind(written, 9);

    // Paths.
    TPathCore const path = u"C:/docs/n\u00F6te.txt";
    auto const element = std::next(path.begin(), 2);
    auto const pathEnd = path.end();
    auto const name = path.Elements().begin();

    // Errors.
    QuorvexError const noError = QuorvexError::NoError(),
                       error = QuorvexError::MakeError(0x10000042, u"HostError_NoSpace");
    TError::SetOriginHook(TError::RecordLocation);
    QuorvexException const cause(u"disk full", TError::LocatedErrorInfo(TError::ErrorInfo(error, TError::SourceLibrary),
                                                                        {"save.cpp", "Save", 34}));
    TError::SetOriginHook(nullptr);
    TError::ErrorInfo const info(error, cause, static_cast<TError::ErrorSource>(12));
    TError::LocatedErrorInfo const located(info, {"save.cpp", "Save", 34});
    HostError hostError({u"no space", u"while saving"}, info);
    hostError.StackMessage(TFormatStringCore(u"in %1").arg(u"main"));
    QuorvexException const& asBase = hostError;
    LogicException const logic(u"m_count >= 0", error);
    CancelException const cancelled(TError::ErrorInfo::NoError());

    // Locks and events.
    TEvent const unset, set(true);
    TAutoResetEvent automatic;
    automatic.AddOnSignalCallback(&automatic, [] {});
    TCountdownEvent countdown(3);
    countdown.Signal();
    RefCntPtr<TCancelEvent> const noEvent, tree = MakeRefCnt<TCancelEvent>(), child = MakeRefCnt<TCancelEvent>();
    tree->Add(child);
    tree->Add(MakeRefCnt<TCancelEvent>());
    child->Add(tree); // a ring
    tree->Signal();
    TRecursiveMutex freeMutex, heldMutex;
    heldMutex.Lock();
    heldMutex.Lock();
    TReadWriteLock readers;
    readers.LockRead();
    RefCntPtr<TSemaphore> const semaphore = TSemaphore::Construct(3);

    // Futures.
    Future<int> const noState, ready = MakeReady(42), failed = MakeFailed<int>(HostError(u"no space")),
                               failedStandard = MakeFailed<int>(std::runtime_error("no luck")),
                               failedNumber = MakeFailed<int>(7), lazy = Run(Launch::Deferred, [] { return 1; });
    SharedFuture<TStringCore> const sharedFuture = MakeReady<TStringCore>(u"x").Share();
    Future<void> const nothing = MakeReady();
    Promise<TStringCore> promise;
    Future<TStringCore> const pending = promise.GetFuture();
    pending.SetName(u"load");
    Promise<int> fresh, broken;
    Future<int> const given = broken.GetFuture();
    given.Cancel();
    auto const& state = *given.PeekState();

    // Others.
    quorvex::StackTrace const trace(quorvex::StackTrace::Current().Frames().first(1));
    sha2 hash, fresh2;
    hash.GetHash(sha2::SHA256, reinterpret_cast<unsigned char const*>("abc"), 3);
    auto const digest = quorvex::hash::DigestOf(sha2::SHA160, {});
    ResourceValues const values{77, 3 << 20, 50, 3};

    // What is none.
    auto& zeroString = Broken<TStringCore>(0x00);
    auto& badString = Broken<TStringCore>(0x55);
    auto& badBlock = Broken<TStringCore>(0xFF);
    static std::int32_t const freedHeader[] = {0, 64, 3}, wrongHeader[] = {1, 16, 16};
    auto& freedBlock = WithBlock(freedHeader);
    auto& wrongBlock = WithBlock(wrongHeader);
    auto& badView = Broken<TStringView>(0xAA);
    auto& badPath = Broken<TPathCore>(0x77);
    auto& badIterator = Broken<TConstCodePointIterator<TStringCore>>(0x11);
    auto& zeroEvent = Broken<TEvent>(0x00);
    auto& badEvent = Broken<TEvent>(0x5A);
    auto& badCancel = Broken<TCancelEvent>(0x00);
    auto& zeroException = Broken<QuorvexException>(0x00);
    auto& badException = Broken<LogicException>(0x33);
    auto& badInfo = Broken<TError::ErrorInfo>(0xEE);
    auto& badFuture = Broken<Future<int>>(0x44);
    auto& badPointer = Broken<RefCntPtr<TCancelEvent>>(0x22);
    auto& badTrace = Broken<quorvex::StackTrace>(0x80);
    auto& badHash = Broken<sha2>(0x09);
    auto& badMutex = Broken<TRecursiveMutex>(0x66);
    // A child, and a message, that come after themselves.
    auto const looped = MakeRefCnt<TCancelEvent>();
    looped->Add(MakeRefCnt<TCancelEvent>());
    char* node = FirstWord(reinterpret_cast<char*>(&*looped) + 56);
    std::memcpy(node + 24, &node, sizeof node);
    QuorvexException const endless(u"again");
    node = FirstWord(FirstWord(reinterpret_cast<char const*>(&endless) + 8));
    std::memcpy(static_cast<void*>(node), &node, sizeof node);

    LookHere();
}
