// Names and lines of addresses, in the program beside addr2line, and in libraries whose symbols are in many places.

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <sstream>
#include <thread>

#include <sys/auxv.h>
#include <sys/resource.h>

#include <gtest/gtest.h>

#include <qvxsys/StackTrace.h>
#include <qvxsys/Symbols.h>

#include "support/ChildProcess.h"
#include "support/InChild_posix.h"
#include "support/SharedLibrary.h"
#include "support/TemporaryFolder.h"

namespace {

namespace symbols = quorvex::symbols;
using symbols::SymbolSource;

std::vector<void*> Capture()
{
    auto const trace = quorvex::StackTrace::Current();
    return {trace.Frames().begin(), trace.Frames().end()};
}

symbols::LoadedModule ModuleNamed(std::string const& name)
{
    for (auto const& module : symbols::LoadedModules()) {
        if (module.path.ends_with('/' + name)) {
            return module;
        }
    }
    return {};
}

// Not inlined, no tail call: each has a frame, with two calls in one line, and one at its very end.
[[gnu::noinline]] int Ends(std::vector<void*>& frames)
{
    frames = Capture();
    return 1;
}
template<class T>
struct Template
{
    [[gnu::noinline]] static int Member(std::vector<void*>& frames, T const&) { return Ends(frames) + 1; }
};

TEST(Symbols, FramesOfTheProgramAreThoseOfAddr2line)
{
    std::vector<void*> addresses;
    ASSERT_EQ(Template<std::string>::Member(addresses, {}), 2);
    auto const program = symbols::LoadedModules().front();
    ASSERT_EQ(program.source, SymbolSource::LineInformation);
    std::erase_if(addresses, [&](void* address) {
        return reinterpret_cast<std::uintptr_t>(address) - program.base >= program.size;
    });
    std::vector<std::string> command{ADDR2LINE, "-a", "-i", "-f", "-C", "-e", program.path};
    for (void* const address : addresses) {
        std::ostringstream number;
        number << std::hex << reinterpret_cast<std::uintptr_t>(address) - 1 - program.base;
        command.push_back(number.str());
    }
    std::istringstream oracle(RunChild(command).out);
    auto const frames = symbols::Resolve(addresses);
    ASSERT_GT(frames.size(), 5u);
    std::size_t withLine = 0;
    std::string function;
    std::getline(oracle, function); // the first address
    for (symbols::Frame const& frame : frames) {
        // The place is that of the innermost function, the name that of the one which others were inlined into.
        std::string place;
        for (std::string line; std::getline(oracle, line) && !line.starts_with("0x");) {
            function = line;
            ASSERT_TRUE(std::getline(oracle, line));
            place = place.empty() ? line.substr(0, line.find(" (discriminator")) : place;
        }
        EXPECT_EQ(frame.Module(), std::filesystem::path(program.path).filename().string());
        // addr2line has the bare names of functions that are local to a source.
        EXPECT_NE(frame.Symbol().find(function), std::string_view::npos) << frame.Symbol() << " is not " << function;
        if (place.starts_with("??")) {
            EXPECT_EQ(frame.File(), "");
            EXPECT_EQ(frame.Line(), -1);
        } else {
            // addr2line puts the folder of the compilation before relative names.
            std::string const own = std::string(frame.File()) + ':' + std::to_string(frame.Line());
            EXPECT_TRUE(('/' + place).ends_with('/' + own) || place == own) << own << " is not " << place;
            ++withLine;
        }
    }
    EXPECT_GE(withLine, 3u);
}

TEST(Symbols, OfAddressesThemselves)
{
    auto const frame = symbols::ResolveAddress(reinterpret_cast<void*>(&Ends));
    EXPECT_NE(frame.Symbol().find("Ends("), std::string_view::npos);
    EXPECT_TRUE(frame.File().ends_with("SymbolTest_posix.cpp"));
    EXPECT_EQ(symbols::ResolveAddress(reinterpret_cast<void*>(&Ends), symbols::Detail::Names).Symbol(), frame.Symbol());
    auto const heap = std::make_unique<int>();
    for (void const* const nowhere : {static_cast<void const*>(nullptr), static_cast<void const*>(heap.get()),
                                      reinterpret_cast<void const*>(UINTPTR_MAX)}) {
        auto const none = symbols::ResolveAddress(nowhere);
        EXPECT_EQ(none.Address(), nowhere);
        EXPECT_EQ(none.Symbol(), "");
        EXPECT_EQ(none.File(), "");
        EXPECT_EQ(none.Line(), -1);
        EXPECT_EQ(none.Module(), "");
    }
}

// Variants of one library (plugin/make_variants.sh).

std::string const kVariants = SYMBOL_VARIANTS;
constexpr char kInner[] = "Inner(int (*)(void*), void*)";
// Without a symbol of its own it has the name in DWARF: GCC writes the bare one for functions local to a source.
#if defined(__clang__)
constexpr auto const& kDescribedInner = kInner;
#else
constexpr char kDescribedInner[] = "Inner";
#endif

/// The frames inside the library, by a call through it and back.
std::vector<symbols::Frame> FramesIn(std::string const& name, SharedLibrary const& library)
{
    std::vector<void*> addresses;
    auto* const call = library.Get<int(int (*)(void*), void*)>("PluginCall");
    call([](void* to) { return Ends(*static_cast<std::vector<void*>*>(to)); }, &addresses);
    addresses.resize(std::min<std::size_t>(addresses.size(), 6)); // what is behind them has large tables
    auto frames = symbols::Resolve(addresses);
    std::erase_if(frames, [&](symbols::Frame const& frame) { return frame.Module() != name; });
    return frames;
}

struct Variant
{
    char const* name;
    char const* searchPath; ///< below the folder of variants
    SymbolSource source;
    char const* debugFile;
    char const* inner; ///< the name of the function that is not exported
    bool hasLines;
};

class SymbolsOfVariant : public testing::TestWithParam<Variant>
{
protected:
    void SetUp() override { ::setenv("DEBUGINFOD_URLS", "http://127.0.0.1:1/", 1); }
    void TearDown() override { symbols::SetSearchPath({}); }
};

TEST_P(SymbolsOfVariant, AreFound)
{
    Variant const& v = GetParam();
    std::string const file = std::string(v.name) + ".so";
    symbols::SetSearchPath(v.searchPath[0] == 0 ? "" : "/nowhere::" + kVariants + '/' + v.searchPath);
    // The engine is there already and learns of the library now.
    static_cast<void>(symbols::ResolveAddress(nullptr));
    auto library = std::make_unique<SharedLibrary>(kVariants + '/' + file);
    auto const frames = FramesIn(file, *library);
    ASSERT_EQ(frames.size(), 2u);
    EXPECT_EQ(frames[0].Symbol(), v.inner);
    EXPECT_EQ(frames[1].Symbol(), "PluginCall");
    for (std::size_t i = 0; i < 2; ++i) {
        EXPECT_EQ(frames[i].Line(), v.hasLines ? (i == 0 ? 7 : 14) : -1);
        EXPECT_EQ(frames[i].File().ends_with("tests/stack/plugin/SymbolPlugin.cpp"), v.hasLines) << frames[i].File();
    }
    auto const module = ModuleNamed(file);
    EXPECT_EQ(module.source, v.source);
    EXPECT_TRUE(v.debugFile[0] == 0 ? module.debugFile.empty() : module.debugFile.ends_with(v.debugFile))
        << module.debugFile;
    // libdwfl would have loaded it by now, to ask for what is missing.
    EXPECT_EQ(ModuleNamed("libdebuginfod.so.1").path, "");
    auto const address = reinterpret_cast<std::uintptr_t>(frames[0].Address());
    EXPECT_LT(address - module.base, module.size);

    library.reset();
    auto const gone = symbols::ResolveAddress(reinterpret_cast<void*>(address));
    EXPECT_EQ(gone.Module(), "");
    EXPECT_EQ(gone.Symbol(), "");
    EXPECT_EQ(frames[1].Symbol(), "PluginCall"); // what was found out stays
}

INSTANTIATE_TEST_SUITE_P(
    Variants, SymbolsOfVariant,
    testing::Values(Variant{"full", "", SymbolSource::LineInformation, "", kInner, true},
                    Variant{"nolocals", "", SymbolSource::LineInformation, "", kDescribedInner, true},
                    Variant{"stripped", "", SymbolSource::DynamicSymbols, "", "", false},
                    Variant{"stripped", "stored", SymbolSource::LineInformation, ".debug", kInner, true},
                    Variant{"stripped", "broken", SymbolSource::DynamicSymbols, "", "", false},
                    Variant{"linked", "", SymbolSource::LineInformation, ".debug/linked.debug", kInner, true},
                    Variant{"named", "", SymbolSource::DynamicSymbols, "", "", false},
                    Variant{"named", "named", SymbolSource::LineInformation, "named/named.debug", kInner, true},
                    Variant{"summed", "", SymbolSource::LineInformation, ".debug/summed.debug", kInner, true},
                    Variant{"wrongsum", "", SymbolSource::DynamicSymbols, "", "", false},
                    Variant{"embedded", "", SymbolSource::SymbolTable, "", kInner, false}),
    [](auto const& param) {
        std::string const path = param.param.searchPath;
        return param.param.name + (path.empty() ? "" : "_in_" + path);
    });

TEST(Symbols, ModulesComeAndGoAndProcessesForkWhileOthersLook)
{
    // No file has the kernel's own library: it is looked up through the linker.
    auto const inKernelLibrary = reinterpret_cast<void const*>(::getauxval(AT_SYSINFO_EHDR) + 1024);
    void (*const atLoad)() = [] { EXPECT_GT(symbols::Resolve(Capture()).size(), 5u); };
    std::ostringstream number;
    number << std::hex << reinterpret_cast<std::uintptr_t>(atLoad);
    ::setenv("SYMBOL_PLUGIN_AT_LOAD", number.str().c_str(), 1);
    std::atomic<bool> done{false};
    std::vector<std::thread> lookers;
    for (int i = 0; i < 3; ++i) {
        lookers.emplace_back([&done, inKernelLibrary] {
            do {
                EXPECT_NE(symbols::ResolveAddress(inKernelLibrary).Module(), "");
                EXPECT_NE(symbols::ResolveAddress(reinterpret_cast<void*>(&Ends)).Symbol(), "");
            } while (!done);
        });
    }
    for (int round = 0; round < 30; ++round) {
        std::string const name = round % 2 == 0 ? "full.so" : "stripped.so";
        SharedLibrary const library(kVariants + '/' + name);
        auto const frames = FramesIn(name, library);
        EXPECT_TRUE(frames.size() == 2 && frames[0].Symbol() == (round % 2 == 0 ? kInner : ""));
#if !defined(__SANITIZE_THREAD__)
        char const* const notYet = reinterpret_cast<char const*>(&Ends) + round + 1;
        EXPECT_EQ(InChild([=] { return symbols::ResolveAddress(notYet, symbols::Detail::Names).Symbol().empty(); }), 0);
#endif
    }
    done = true;
    ::unsetenv("SYMBOL_PLUGIN_AT_LOAD");
    for (std::thread& looker : lookers) {
        looker.join();
    }
}

// A file that was replaced under a loaded library is another one, and says nothing of what is in memory.
TEST(Symbols, ReplacedFileIsNotRead)
{
    TemporaryFolder const folder;
    std::string const copy = folder.Path() / "replaced.so";
    std::filesystem::copy_file(kVariants + "/full.so", copy);
    SharedLibrary const library(copy);
    std::filesystem::remove(copy);
    std::filesystem::copy_file(kVariants + "/summed.so", copy);
    auto const frames = FramesIn("replaced.so", library);
    ASSERT_EQ(frames.size(), 2u);
    EXPECT_EQ(frames[0].Symbol(), "");
    EXPECT_EQ(frames[1].Symbol(), "PluginCall"); // by the dynamic linker
    EXPECT_EQ(frames[1].Line(), -1);
}

// A trace for the error that descriptors ran out must not take the names from all later ones.
#if !defined(__clang__) // whose UndefinedBehaviorSanitizer looks at objects through a pipe
TEST(Symbols, WithoutDescriptorsOnlyForNow)
{
    SharedLibrary const library(kVariants + "/full.so");
    symbols::ClearCache();
    rlimit before{};
    ::getrlimit(RLIMIT_NOFILE, &before);
    rlimit const none{0, before.rlim_max};
    ::setrlimit(RLIMIT_NOFILE, &none);
    auto const without = FramesIn("full.so", library);
    ::setrlimit(RLIMIT_NOFILE, &before);
    auto const with = FramesIn("full.so", library);
    ASSERT_EQ(without.size(), 2u);
    EXPECT_EQ(without[1].Symbol(), "PluginCall"); // by the dynamic linker
    EXPECT_EQ(without[0].Line(), -1);
    ASSERT_EQ(with.size(), 2u);
    EXPECT_EQ(with[0].Symbol(), kInner);
    EXPECT_EQ(with[0].Line(), 7);
}
#endif

// Debug files with bytes changed at random: whatever is made of them, it is made without a crash.
TEST(Symbols, DamagedDebugFiles)
{
    namespace fs = std::filesystem;
    TemporaryFolder const folder;
    SharedLibrary const library(kVariants + "/stripped.so");
    fs::path stored;
    for (auto const& entry : fs::recursive_directory_iterator(kVariants + "/stored")) {
        stored = entry.is_regular_file() ? entry.path() : stored;
    }
    std::string const good = ReadWhole(stored);
    auto const target = folder.Path() / fs::relative(stored, kVariants + "/stored");
    fs::create_directories(target.parent_path());
    std::mt19937 random(1);
    for (int round = 0; round < 40; ++round) {
        std::string bytes = good;
        for (int i = 0; i < 20; ++i) {
            bytes[random() % bytes.size()] = static_cast<char>(random());
        }
        fs::remove(target);
        std::ofstream(target, std::ios::binary) << bytes;
        symbols::SetSearchPath(folder.Path().string() + (round % 2 != 0 ? ":" : ""));
        EXPECT_EQ(FramesIn("stripped.so", library).size(), 2u);
    }
    symbols::SetSearchPath({});
}

TEST(Symbols, CacheKeepsItsLimit)
{
    std::size_t const before = symbols::GetCacheUse().limit;
    std::vector<void*> addresses;
    for (std::uintptr_t i = 0; i < 500; ++i) {
        addresses.push_back(reinterpret_cast<void*>(reinterpret_cast<std::uintptr_t>(&Ends) + i * 7));
    }
    auto const expected = symbols::Resolve(addresses);
    for (std::size_t const limit : {std::size_t{0}, std::size_t{100}, std::size_t{20'000}, std::size_t{1} << 19}) {
        symbols::SetCacheLimit(limit);
        for (int round = 0; round < 2; ++round) {
            auto const frames =
                symbols::Resolve(addresses, round == 0 ? symbols::Detail::Names : symbols::Detail::NamesAndLines);
            EXPECT_TRUE(std::equal(frames.begin(), frames.end(), expected.begin(), expected.end(),
                                   [&](symbols::Frame const& a, symbols::Frame const& b) {
                                       return a.Symbol() == b.Symbol() && (round == 0 || a.Line() == b.Line());
                                   }));
        }
        auto const use = symbols::GetCacheUse();
        EXPECT_LE(use.bytes, limit);
        EXPECT_EQ(use.limit, limit);
        EXPECT_EQ(use.addresses > 0, limit >= 20'000);
    }
    symbols::SetCacheLimit(before);
    EXPECT_EQ(symbols::GetCacheUse().addresses, 0u);
}

} // namespace
