// `qvx watch` and `qvx top` as users run them, on real processes.

#include "qvx/RunningProgram_posix.h"
#include "qvx/ScanFixture.h"

#include <optional>
#include <regex>

#include <qvxsys/ResourceObserver.h>
#include <qvxsys/TEvent.h>
#include <qvxsys/TSystem.h>

#include "Loopback.h"
#include "ProcText.h"
#include "Units.h"
#include "support/Samples.h"

namespace {

using namespace scan_test;
using Arguments = std::vector<std::string>;

Arguments Watch(unsigned short port, Arguments const& options, Arguments const& command)
{
    Arguments all{Utf8(fs::absolute(QVX_PROGRAM)), "watch", "--port", std::to_string(port)};
    all.insert(all.end(), options.begin(), options.end());
    all.emplace_back("--");
    all.insert(all.end(), command.begin(), command.end());
    return all;
}

std::string Hog()
{
    return Utf8(fs::absolute(QVX_HOG_PROGRAM));
}

/// The value of a line of /proc/PID/status; empty when there is none.
std::string Status(pid_t pid, std::string const& name)
{
    std::string const text = samples::ReadFile("/proc/" + std::to_string(pid) + "/status");
    std::smatch match;
    return std::regex_search(text, match, std::regex("(?:^|\n)" + name + ":\\s*([^\n]*)")) ? match[1].str() : "";
}

std::uint64_t PrivateBytes(pid_t pid)
{
    return 1024 * (std::stoull("0" + Status(pid, "RssAnon")) + std::stoull("0" + Status(pid, "VmSwap")));
}

pid_t ChildOf(pid_t pid)
{
    std::string const process = "/proc/" + std::to_string(pid) + "/task/" + std::to_string(pid);
    return static_cast<pid_t>(std::stol("0" + samples::ReadFile(process + "/children")));
}

/// The program that uses memory as it is told to, watched and ready.
struct WatchedHog : RunningProgram
{
    explicit WatchedHog(Arguments const& options = {}, unsigned short port = FreePort(), Arguments const& of = {})
        : RunningProgram(Watch(port, options, Command(of)))
    {
        ReadUntil("ready\n");
    }

private:
    static Arguments Command(Arguments command)
    {
        command.insert(command.begin(), Hog());
        return command;
    }
};

/// With # for every number, and all sizes in one unit.
std::string Masked(std::string const& text)
{
    std::string const numbers = std::regex_replace(text, std::regex("[0-9]+([.,][0-9]+)*"), "#");
    return std::regex_replace(numbers, std::regex("# ([KMGT]i)?B"), "# B");
}

/// Waits until all of these have reported, and the first one that it uses a part of its limit.
void AwaitReports(unsigned short port, std::vector<pid_t> const& pids)
{
    TAutoResetEvent arrived;
    ResourceObserver observer(port, {[&](ResourceValues const&) { arrived.Signal(); }, nullptr});
    auto const hasReported = [&](pid_t pid) {
        return std::ranges::any_of(observer.GetSnapshot(), [&](ResourceSample const& sample) {
            return sample.m_values.m_processId == static_cast<unsigned int>(pid) &&
                   (pid != pids.front() || sample.m_values.m_memoryLimitUsage != 0);
        });
    };
    while (!std::ranges::all_of(pids, hasReported) && arrived.Wait(std::chrono::minutes(1))) {
    }
}

} // namespace

// As if the command had been started without it: output byte for byte, exit status, the signal that has ended it.
TEST(Watch, PassesOnOutputAndEnd)
{
    // Signals, limits and descriptors, as a program finds them.
    std::string const inheritance =
        "grep -E 'Sig(Blk|Ign)' /proc/self/status; ulimit -n; set -- /proc/$$/fd/*; echo $#";
    std::tuple<Arguments, int, std::string, std::string> const table[] = {
        {{"sh", "-c", "printf 'a\\0b\\n\\377'; printf c >&2; exit 7"}, 7, std::string("a\0b\n\xFF", 5), "c"},
        {{"printf", "%s|", "", "a b", "-x", "[1,2]", "--"}, 0, "|a b|-x|[1,2]|--|", ""},
        {{"sh", "-c", "kill -SEGV $$"}, -SIGSEGV, "", ""},
        {{"sh", "-c", "kill -INT $$"}, -SIGINT, "", ""},
        {{"/no such\nfile"},
         127,
         "",
         "qvx: cannot run /no such\uFFFDfile: No such file or directory (Qvx_CommandNotFound)\n"},
        {{"/etc"}, 126, "", "qvx: cannot run /etc: Permission denied (Qvx_CannotRun)\n"},
        {{"sh", "-c", inheritance}, 0, RunChild({"/bin/sh", "-c", inheritance}).out, ""},
    };
    unsigned short const port = FreePort();
    for (auto const& [command, status, out, err] : table) {
        ChildResult const run = RunChild(Watch(port, {}, command));
        EXPECT_EQ(run.status, status) << command.back();
        EXPECT_EQ(run.out, out) << command.back();
        EXPECT_EQ(run.err, err) << command.back();
    }
}

TEST(Watch, RefusesWhatMakesNoSense)
{
    std::string const port = std::to_string(FreePort());
    std::pair<std::string, char const*> const wrong[] = {
        {"--max-memory", "2X"},   {"--all-memory", "0%"}, {"--all-memory", "80"},
        {"--all-memory", "101%"}, {"--max-cpu", "100"},   {"--interval", "1500ms"},
        {"--interval", "0s"},     {"--grace", "1d"},      {"--port", "0"}};
    for (auto const& [option, value] : wrong) {
        ChildResult const run = RunChild(Watch(1, {option, value}, {"true"}));
        EXPECT_EQ(run.status, 2) << option << value;
        EXPECT_TRUE(run.err.starts_with("qvx: " + option + ": ")) << run.err;
    }
    EXPECT_EQ(Qvx({"watch", "--port", port}).status, 2);
    ChildResult const log = RunChild(Watch(FreePort(), {"--log", "/nowhere/log"}, {"true"}));
    EXPECT_EQ(log.err, "qvx: /nowhere/log: No such file or directory (Qvx_CannotAccess)\n");
    EXPECT_EQ(log.status, 125);
    BoundPort const taken;
    std::string const inUse = "qvx: port " + std::to_string(taken.Number()) + ": ";
    ChildResult const watch = RunChild(Watch(taken.Number(), {}, {"true"}));
    ChildResult const top = Qvx({"top", "--once", "--port", std::to_string(taken.Number())});
    for (ChildResult const& run : {watch, top}) {
        EXPECT_TRUE(run.err.starts_with(inUse) && run.err.ends_with(" (Qvx_CannotListen)\n")) << run.err;
        EXPECT_NE(run.status, 0);
    }
}

TEST(Watch, HandsOnSignals)
{
    for (int const signal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGUSR1, SIGUSR2, SIGWINCH}) {
        std::string const script = "trap 'echo got; exit 3' " + std::to_string(signal) + "; echo ready; read x; exit 4";
        RunningProgram run(Watch(FreePort(), {}, {"sh", "-c", script}));
        ASSERT_EQ(run.ReadUntil("ready\n"), "ready\n");
        run.Send(signal);
        EXPECT_EQ(run.ReadAll(), "got\n") << signal;
        EXPECT_EQ(run.Wait(), 3) << signal;
    }
    WatchedHog run;
    run.Send(SIGTERM);
    EXPECT_EQ(run.Wait(), -SIGTERM);
}

TEST(Watch, StopsAndGoesOnWithTheCommand)
{
    WatchedHog run;
    run.Send(SIGTSTP);
    ASSERT_TRUE(run.WaitUntilItStops());
    EXPECT_EQ(Status(ChildOf(run.Pid()), "State").substr(0, 1), "T");
    run.Write("1\n");
    run.Send(SIGCONT);
    EXPECT_EQ(run.ReadUntil("1 MiB\n"), "1 MiB\n");
    run.EndInput();
    EXPECT_EQ(run.Wait(), 0);
}

// Ctrl-C comes from the terminal to both, and to the command only once.
TEST(Watch, OnATerminal)
{
    std::string const script = "n=0; trap 'n=$((n+1))' INT; echo ready; read x; read x; echo got $n";
    RunningProgram run(Watch(FreePort(), {}, {"bash", "-c", script}), RunningProgram::Terminal);
    run.ReadUntil("ready");
    run.Write("\x03");
    run.ReadUntil("^C");
    run.Write("a\nb\n");
    EXPECT_NE(run.ReadUntil("got 1").find("got 1"), std::string::npos);
    EXPECT_EQ(run.Wait(), 0);
}

// Whoever has started it gets the terminal back, as without it.
TEST(Watch, StopsWithACommandThatHasTheTerminalAndStopsItself)
{
    RunningProgram run(Watch(FreePort(), {}, {"bash", "-c", "kill -STOP $$; echo on"}), RunningProgram::Terminal);
    ASSERT_TRUE(run.WaitUntilItStops());
    run.Send(SIGCONT);
    EXPECT_EQ(run.ReadUntil("on"), "on");
    EXPECT_EQ(run.Wait(), 0);
}

TEST(Watch, TheCommandDiesWithIt)
{
    WatchedHog run({}, FreePort(), {"stubborn"});
    run.Send(SIGKILL);
    EXPECT_EQ(run.Wait(), -SIGKILL);
    EXPECT_EQ(run.ReadAll(), ""); // nobody has it open any more
}

// What goes on when the command has ended is said, and is let be.
TEST(Watch, TellsWhatIsLeftBehind)
{
    RunningProgram run(Watch(FreePort(), {}, {"bash", "-c", "exec 3<&0; " + Hog() + " <&3 & exit 5"}));
    run.ReadUntil("ready\n");
    EXPECT_EQ(run.Wait(), 5);
    std::string const told = run.ReadErrorsUntil("\n");
    EXPECT_TRUE(
        std::regex_match(told, std::regex("qvx watch: the command has ended; what it has started goes on without "
                                          "limits: 1 \\(pid [0-9]+\\)\\.\n")))
        << told;
    run.Write("1\n");
    EXPECT_EQ(run.ReadUntil("1 MiB\n"), "1 MiB\n");
}

// What the command has started in a session of its own and left behind counts, is asked to end, and killed if it does
// not.
TEST(Watch, EndsAllOfACommandAboveItsLimit)
{
    unsigned short const port = FreePort();
    std::string const script = "exec 3<&0; (setsid " + Hog() + " stubborn <&3 &); sleep 60";
    RunningProgram run(Watch(port, {"--max-memory", "200M", "--grace", "300ms"}, {"bash", "-c", script}));
    run.ReadUntil("ready\n");
    run.Write("300\n");
    run.ReadUntil("300 MiB\n");
    EXPECT_EQ(run.ReadAll(), "");
    EXPECT_EQ(
        Masked(run.ReadAllErrors()),
        "qvx watch: ended bash (pid #) after # s: with all it has started it used # B, more than the # B of "
        "--max-memory. No other process reports on port #. There was no --on-limit to try; asked to end: #, killed "
        "after # s: #; gone after # s.\n");
    EXPECT_EQ(run.Wait(), 124);
}

TEST(Watch, FreeingMemoryInTimeSavesTheCommand)
{
    std::string const onLimit = "echo $QVX_LIMIT; kill -USR1 $QVX_PID";
    WatchedHog run({"--max-memory=200M", "--on-limit", onLimit});
    run.Write("300\n");
    EXPECT_EQ(run.ReadUntil("freed\n"), "300 MiB\nfreed\n");
    EXPECT_EQ(Masked(run.ReadErrorsUntil("goes on.\n")),
              "memory\nqvx watch: a limit was exceeded; --on-limit freed # B, and the command goes on.\n");
    run.EndInput();
    EXPECT_EQ(run.Wait(), 0);
}

// A CMD that hangs does not keep the command from being ended.
TEST(Watch, CpuLimitAndACommandOnLimitThatHangs)
{
    ChildResult const run = RunChild(
        Watch(FreePort(), {"--max-cpu=1", "--sustain=1s", "--on-limit=cat /dev/zero >/dev/null", "--grace=200ms"},
              {"bash", "-c", "while :; do :; done"}));
    EXPECT_EQ(
        Masked(run.err),
        "qvx watch: ended bash (pid #) after # s: the watched processes used #% of the CPU, more than the #% of "
        "--max-cpu, for # s, and it used the most, #%. No other process reports on port #. --on-limit (ended after "
        "# s) freed # B; asked to end: #; gone after # s.\n");
    EXPECT_EQ(run.status, 124);
}

TEST(Watch, DryRunOnlyTells)
{
    RunningProgram run(Watch(FreePort(), {"--max-memory=2M", "--dry-run", "--on-limit", "echo no"}, {Hog()}));
    EXPECT_TRUE(run.Write("4\n"));
    EXPECT_TRUE(run.ReadErrorsUntil("--max-memory. ").starts_with("qvx watch: would have ended "));
    run.EndInput();
    EXPECT_EQ(run.Wait(), 0);
}

// Three of them share the machine; one takes more than there is for all. It is the heaviest from the start, so that it
// is the one that has to go even if something else on the machine takes what is left.
TEST(Watch, OnlyTheHeaviestHasToGo)
{
    TSystem::MemoryInfo const machine = TSystem::Memory();
    std::uint64_t const unit = machine.totalPhysical / 100;
    if (machine.availablePhysical < 28 * unit) {
        GTEST_SKIP() << "too little memory is free";
    }
    unsigned short const port = FreePort();
    TemporaryFolder const folder;
    std::string const log = (folder.Path() / "log").string();
    std::string const limit = std::to_string(machine.usedPhysical + 9 * unit);
    std::string const own = std::to_string(25 * unit);
    auto const mebibytes = [unit](std::uint64_t units) { return std::to_string((units * unit) >> 20); };
    WatchedHog hog({"--all-memory", limit, "--max-memory", own, "--log", log}, port);
    hog.Write(mebibytes(1) + "\n");
    WatchedHog first({"--all-memory", limit}, port);
    WatchedHog last({"--all-memory", limit}, port);
    std::vector<pid_t> const pids{hog.Pid(), first.Pid(), last.Pid()};
    AwaitReports(port, pids); // what is heard here, they have heard
    std::string const child = std::to_string(ChildOf(hog.Pid()));
    for (std::uint64_t size = 2; size < 24 && hog.Write(mebibytes(size) + "\n"); ++size) { // until it is ended
        hog.ReadUntil("MiB\n");
    }
    hog.ReadAll();
    first.EndInput();
    last.EndInput();
    EXPECT_TRUE(
        std::regex_match(Masked(hog.ReadAllErrors()),
                         std::regex("qvx watch: ended .*qvx_hog \\(pid #\\) after # s: # B of the machine's memory "
                                    "were in use, more than the # B of --all-memory, and it used the largest "
                                    "share of its own limit, #% \\(# B\\)\\. Others that report on port #: # \\(# "
                                    "B, #% of its limit, #% CPU\\), # \\(# B, #% of its limit, #% CPU\\)\\. There "
                                    "was no --on-limit to try; asked to end: #; gone after # s\\.\n")));
    EXPECT_EQ(hog.Wait(), 124);

    // The lines of the monitor, whose own tests have all of them word for word.
    std::vector<std::string> lines = {"listening on port " + std::to_string(port), "Adding child process: " + child,
                                      "Process is above memory threshold. Requesting termination.", "stopped"};
    for (pid_t const pid : pids) {
        lines.push_back("pid: " + std::to_string(pid) + "; Memory info: ");
    }
    for (std::string const& line : lines) {
        EXPECT_NE(samples::ReadFile(log).find("Resource Manager: " + line), std::string::npos)
            << line << samples::ReadFile(log);
    }
    for (RunningProgram* const run : {&first, &last}) {
        EXPECT_EQ(run->ReadAllErrors(), "");
        EXPECT_EQ(run->Wait(), 0);
    }
}

// The figures are those of the kernel, for the same processes.
TEST(Top, AgreesWithTheKernelAndPs)
{
    unsigned short const port = FreePort();
    WatchedHog small({"--max-memory", "100M"}, port, {"a \x1B[1m\tb"});
    WatchedHog large({"--max-memory", "100M"}, port);
    large.Write("64\n");
    large.ReadUntil("64 MiB\n");
    std::string const portText = std::to_string(port);
    ChildResult const run = Qvx({"top", "--json", "--sort", "memory", "--port", portText});
    ASSERT_EQ(run.status, 0) << run.err;
    json const top = json::parse(run.out);
    ASSERT_EQ(top["processes"].size(), 2u) << run.out;
    std::uint64_t sum = 0;
    for (std::size_t i = 0; i < 2; ++i) {
        pid_t const pid = (i == 0 ? large : small).Pid();
        json const& row = top["processes"][i];
        EXPECT_EQ(row["pid"], pid);
        ChildResult const ps = RunChild({"/bin/ps", "-ww", "-o", "args=", "-p", std::to_string(pid)});
        std::string arguments = samples::ReadFile("/proc/" + std::to_string(pid) + "/cmdline");
        std::ranges::replace(arguments, '\0', ' ');
        EXPECT_EQ(row["command"].get<std::string>() + " ", arguments);
        if (i == 0) {
            EXPECT_EQ(row["command"].get<std::string>() + "\n", ps.out);
        }
        double const memory = row["memory"];
        auto const measured = static_cast<double>(PrivateBytes(pid) + PrivateBytes(ChildOf(pid)));
        EXPECT_NEAR(memory, measured, 4 << 20) << "pages come and go";
        EXPECT_EQ(row["share"], static_cast<int>(memory / (100 << 20) * 100));
        EXPECT_LT(row["ageSeconds"], 1.5);
        sum += row["memory"].get<std::uint64_t>();
    }
    EXPECT_EQ(top["total"]["memory"], sum);
    EXPECT_EQ(top["machine"]["memoryTotal"], TSystem::Memory().totalPhysical);

    ChildResult const table = Qvx({"top", "--once", "--sort", "pid", "--port", portText});
    std::vector<std::string> const lines = Lines(table.out);
    ASSERT_EQ(lines.size(), 5u) << table.out;
    EXPECT_TRUE(std::regex_match(lines[0], std::regex(" *PID +CPU +MEMORY +SHARE +AGE  COMMAND"))) << lines[0];
    EXPECT_TRUE(lines[1].ends_with("a \uFFFD[1m\uFFFDb")) << lines[1];
    EXPECT_EQ(Masked(lines[4]), "total # on port #: CPU #%, memory # B; machine: memory # B of # B");
}

TEST(Top, IsLiveOnATerminal)
{
    ChildResult const without = Qvx({"top"});
    EXPECT_EQ(without.err, "qvx: this needs a terminal; try qvx top --once, or --json (Qvx_NoTerminal)\n");
    EXPECT_EQ(without.status, 1);

    unsigned short const port = FreePort();
    WatchedHog const watched({}, port);
    RunningProgram top({Utf8(fs::absolute(QVX_PROGRAM)), "top", "--port", std::to_string(port), "--interval", "100ms"},
                       RunningProgram::Terminal);
    auto const isRaw = [&] {
        termios modes{};
        tcgetattr(top.TerminalDescriptor(), &modes);
        return (modes.c_lflag & (ICANON | ECHO)) == 0;
    };
    std::string const pid = std::to_string(watched.Pid());
    std::string const drawn = top.ReadUntil(pid);
    EXPECT_NE(drawn.find("COMMAND"), std::string::npos) << drawn;
    EXPECT_TRUE(isRaw());
    winsize const narrow{5, 40, 0, 0};
    ioctl(top.TerminalDescriptor(), TIOCSWINSZ, &narrow);
    top.ReadUntil("\x1B[2J");
    std::string const redrawn = top.ReadUntil("total 1 on port");
    EXPECT_NE(redrawn.find(pid), std::string::npos) << redrawn;
    EXPECT_EQ(redrawn.find("COMMAND"), std::string::npos) << "there is no room for it";
    top.Write("\x1BOD\x1BOC\x1BOB\x1BOAmrq"); // arrow keys, as this terminal sends them
    EXPECT_NE(top.ReadAll().find("\x1B[?1049l"), std::string::npos) << "the other screen is back";
    EXPECT_EQ(top.Wait(), 0);
    EXPECT_FALSE(isRaw());
}

TEST(Loopback, EveryListenerGetsEachDatagramOnce)
{
    qvx::LoopbackCheck const check = qvx::CheckLoopback(FreePort());
    EXPECT_TRUE(check.IsGood()) << check.error.toStdString() << ' ' << check.listeners[0].once << ' '
                                << check.listeners[1].once;
    EXPECT_EQ(check.sent, 100u);
}

TEST(ProcText, IsReadHoweverMalformed)
{
    std::string const tail = " 1 2 3 0 -1 4194560 100 0 0 0 12 30 5 6 20 0 1 0 77 0 18446744073709551615\n";
    std::string threads = tail; // two of them
    threads.replace(threads.find(" 1 0 77"), 2, " 2");
    constexpr std::optional<unsigned long long> kNone;
    std::pair<std::string, std::optional<unsigned long long>> const table[] = {
        {"7 (sh) S" + tail, 77},
        {"7 (a) Z (b\n) R" + tail, 77},
        {"7 () Z" + tail, kNone},
        {"7 () X" + tail, kNone},
        {"7 () Z" + threads, 77},
        {"7 (sh) S" + tail.substr(0, tail.find(" 77")), kNone},
        {"7 (sh) S 1 x" + tail, kNone},
        {"7 (sh) S 99999999999999999999" + tail, kNone},
        {"7 (sh) ", kNone},
        {"", kNone},
    };
    for (auto const& [text, start] : table) {
        EXPECT_EQ(qvx::StartTime(text), start) << text;
    }
    EXPECT_EQ(qvx::Numbers<int>(" 12  3\n4 x 5"), (std::vector{12, 3, 4}));
    EXPECT_EQ(qvx::Numbers<int>("1 99999999999"), std::vector{1});
    EXPECT_EQ(qvx::CommandText(std::string("a\0\0b\0\0", 6), "c\n"), "a  b");
    EXPECT_EQ(qvx::CommandText(std::string("\0", 1), "c d\n"), "c d");
    EXPECT_EQ(qvx::CommandText("", ""), "");
}

TEST(Units, AreReadAndWritten)
{
    std::pair<char const*, std::optional<std::uint64_t>> const sizes[] = {
        {"1", 1},         {"2G", 2ull << 30}, {"1.5k", 1536}, {"3MiB", 3 << 20}, {"8388607T", 8388607ull << 40},
        {"8388608T", {}}, {"", {}},           {"0", {}},      {"0.9", {}},       {"-1", {}},
        {"+1", {}},       {"G", {}},          {"1GB", {}},    {"1Gi", {}},       {"1 G", {}},
        {"nan", {}},      {"1e3", {}},        {"80%", {}},
    };
    for (auto const& [text, bytes] : sizes) {
        EXPECT_EQ(qvx::ParseSize(text), bytes) << text;
    }
    using namespace std::chrono_literals;
    std::pair<char const*, std::optional<std::chrono::milliseconds>> const times[] = {
        {"0", 0ms},     {"10", 10s}, {"250ms", 250ms}, {"1.5m", 90s}, {"2h", 2h},
        {"10001h", {}}, {"1d", {}},  {"s", {}},        {"-1s", {}},   {"inf", {}},
    };
    for (auto const& [text, time] : times) {
        EXPECT_EQ(qvx::ParseDuration(text), time) << text;
    }
    std::pair<std::uint64_t, char const*> const written[] = {
        {0, "0 B"},
        {1023, "1023 B"},
        {1024, "1.00 KiB"},
        {(1 << 20) - 1, "1023.99 KiB"},
        {1610612736, "1.50 GiB"},
        {~0ull, "16.00 EiB"},
    };
    for (auto const& [bytes, text] : written) {
        EXPECT_EQ(qvx::SizeText(bytes).toStdString(), text);
    }
    std::pair<std::chrono::milliseconds, char const*> const ages[] = {
        {59'940ms, "59.9 s"}, {59'950ms, "1 min"}, {89min, "89 min"}, {90min, "2 h"}};
    for (auto const& [time, text] : ages) {
        EXPECT_EQ(qvx::TimeText(time).toStdString(), text);
    }
}
