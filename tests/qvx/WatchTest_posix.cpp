// `qvx watch` and `qvx top` as users run them, on real processes.

#include "qvx/RunningProgram_posix.h"

#include <fstream>
#include <optional>
#include <regex>
#include <sstream>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "support/ChildProcess.h"
#include "support/TemporaryFolder.h"

namespace {

using nlohmann::json;
using Arguments = std::vector<std::string>;

std::string PathOf(char const* program)
{
    return std::filesystem::absolute(program).string();
}

Arguments Watch(unsigned short port, Arguments const& options, Arguments const& command)
{
    Arguments all{PathOf(QVX_PROGRAM), "watch", "--port", std::to_string(port)};
    all.insert(all.end(), options.begin(), options.end());
    all.emplace_back("--");
    all.insert(all.end(), command.begin(), command.end());
    return all;
}

std::string Hog()
{
    return PathOf(QVX_HOG_PROGRAM);
}

std::string FileText(std::string const& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// The value of a line of /proc/PID/status; empty when there is none.
std::string Status(pid_t pid, std::string const& name)
{
    std::string const text = FileText("/proc/" + std::to_string(pid) + "/status");
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
    return static_cast<pid_t>(std::stol("0" + FileText(process + "/children")));
}

std::string Masked(std::string const& text)
{
    std::string const bytes = std::regex_replace(text, std::regex("[0-9][0-9,]* bytes"), "# bytes");
    return std::regex_replace(std::regex_replace(bytes, std::regex("[0-9.]+ [KMG]iB"), "# iB"),
                              std::regex("[0-9]+(%|\\.[0-9] s)"), "#$1");
}

} // namespace

// As if the command had been started without it: output byte for byte, exit status, the signal that has ended it.
TEST(Watch, PassesOnOutputAndEnd)
{
    struct
    {
        Arguments command;
        int status;
        std::string out;
        std::string err;
    } const table[] = {
        {{"sh", "-c", "printf 'a\\0b\\n\\377'; printf c >&2; exit 7"}, 7, std::string("a\0b\n\xFF", 5), "c"},
        {{"printf", "%s|", "", "a b", "-x", "[1,2]", "--"}, 0, "|a b|-x|[1,2]|--|", ""},
        {{"sh", "-c", "kill -SEGV $$"}, -SIGSEGV, "", ""},
        {{"sh", "-c", "kill -INT $$"}, -SIGINT, "", ""},
        {{"/no such\nfile"}, 127, "", "qvx: cannot run /no such\uFFFDfile: No such file or directory (Qvx_CommandNotFound)\n"},
        {{"/etc"}, 126, "", "qvx: cannot run /etc: Permission denied (Qvx_CannotRun)\n"},
        {{"sh", "-c", "grep -E 'Sig(Blk|Ign)|PPid' /proc/self/status | grep -v PPid; ulimit -n; ls /proc/$$/fd | wc -l"},
         0,
         RunChild({"/bin/sh", "-c",
                   "grep -E 'Sig(Blk|Ign)' /proc/self/status; ulimit -n; ls /proc/$$/fd | wc -l"})
             .out,
         ""},
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
    for (Arguments const& wrong : {Arguments{"--max-memory", "2X"}, {"--max-memory", "-1"}, {"--max-memory", "infG"},
                                   {"--all-memory", "0%"}, {"--all-memory", "101%"}, {"--max-cpu", "100"},
                                   {"--interval", "1500ms"}, {"--interval", "0s"}, {"--grace", "1d"}, {"--port", "0"}}) {
        ChildResult const run = RunChild(Watch(1, wrong, {"true"}));
        EXPECT_EQ(run.status, 2) << wrong[1];
        EXPECT_TRUE(run.err.starts_with("qvx: " + wrong[0] + ": " + wrong[1])) << run.err;
    }
    EXPECT_EQ(RunChild({PathOf(QVX_PROGRAM), "watch", "--port", port}).status, 2);
    ChildResult const log = RunChild(Watch(FreePort(), {"--log", "/nowhere/log"}, {"true"}));
    EXPECT_EQ(log.err, "qvx: /nowhere/log: No such file or directory (Qvx_CannotAccess)\n");
    EXPECT_EQ(log.status, 125);
}

TEST(Watch, HandsOnSignals)
{
    for (int const signal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGUSR1, SIGUSR2, SIGWINCH}) {
        std::string const script = "trap 'echo got; exit 3' " + std::to_string(signal) + "; echo ready; read x; exit 4";
        RunningProgram run(Watch(FreePort(), {}, {"bash", "-c", script}));
        ASSERT_EQ(run.ReadUntil("ready\n"), "ready\n");
        run.Send(signal);
        if (signal == SIGWINCH) { // does not end the read
            run.Write("\n");
        }
        EXPECT_EQ(run.ReadAll(), "got\n") << signal;
        EXPECT_EQ(run.Wait(), 3) << signal;
    }
    RunningProgram run(Watch(FreePort(), {}, {Hog()}));
    run.ReadUntil("ready\n");
    run.Send(SIGTERM);
    EXPECT_EQ(run.Wait(), -SIGTERM);
}

TEST(Watch, StopsAndGoesOnWithTheCommand)
{
    RunningProgram run(Watch(FreePort(), {}, {Hog()}));
    run.ReadUntil("ready\n");
    run.Send(SIGTSTP);
    int status = 0;
    ASSERT_EQ(waitpid(run.Pid(), &status, WUNTRACED), run.Pid());
    ASSERT_TRUE(WIFSTOPPED(status));
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

TEST(Watch, TheCommandDiesWithIt)
{
    RunningProgram run(Watch(FreePort(), {}, {Hog(), "stubborn"}));
    run.ReadUntil("ready\n");
    run.Send(SIGKILL);
    EXPECT_EQ(run.Wait(), -SIGKILL);
    EXPECT_EQ(run.ReadAll(), ""); // nobody has it open any more
}

TEST(Watch, TellsWhatIsLeftBehind)
{
    RunningProgram run(Watch(FreePort(), {}, {"bash", "-c", Hog() + " <&3 3<&- & exit 5"}));
}

// What a shell has started in the background counts, is asked to end, and is killed if it does not. The manager's
// smallest unit of time is a second.
TEST(Watch, EndsAllOfACommandAboveItsLimit)
{
    unsigned short const port = FreePort();
    std::string const script = "exec 3<&0; " + Hog() + " stubborn <&3 & wait";
    RunningProgram run(Watch(port, {"--max-memory", "200M", "--grace", "300ms"}, {"bash", "-c", script}));
    run.ReadUntil("ready\n");
    run.Write("300\n");
    run.ReadUntil("300 MiB\n");
    EXPECT_EQ(run.ReadAll(), "");
    EXPECT_EQ(Masked(run.ReadAllErrors()),
              Masked("qvx watch: ended bash (pid " + std::to_string(run.Pid() + 0) + ") after 1.0 s: ") )
        << "";
    EXPECT_EQ(run.Wait(), 124);
}
