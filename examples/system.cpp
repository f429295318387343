// The examples of the headers of process services and numeric functions.

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iostream>
#include <limits>
#include <vector>

#include <qvxsys/qvxsys.h>

namespace {

bool UpTime()
{
    unsigned int const start = TSystem::AppUpTime();
    TSystem::Sleep(5);
    return TSystem::AppUpTime() - start >= 5; // right across the wrap
}

bool Memory()
{
    TSystem::MemoryInfo const memory = TSystem::Memory();
    unsigned long long const cache = std::min(memory.totalPhysical / 8, memory.availablePhysical / 2);
    std::cout << "cache of " << (cache >> 20) << " MiB\n";
    return cache <= memory.totalPhysical;
}

bool LastError()
{
    if (std::FILE* const file = std::fopen("/no such folder/no such file", "rb"); file == nullptr) {
        std::string const text = GetLastErrorString();
        std::cout << text << '\n';
        return text.starts_with("last error : 0x000000000000000");
    }
    return false;
}

double Work()
{
    double sum = 0;
    for (int i = 1; i < 1'000'000; ++i) {
        sum += std::sqrt(i);
    }
    return sum;
}

bool CpuTime()
{
    quorvex::cputime::ThreadTimeValue total;
    for (int i = 0; i < 3; ++i) {
        quorvex::cputime::ThreadTimeScope const scope(total); // adds at its end
        std::cout << Work() << '\n';
    }
    std::cout << total.kernelMs + total.userMs << " ms\n";
    return total.kernelMs == 0;
}

bool Numbers()
{
    std::vector<double> const before{1, std::numeric_limits<double>::quiet_NaN()};
    std::vector<double> const after = before;
    return TMath::round2(12.345, 1) == 12.3 && TMath::MulDiv(12, 96, 72) == 16 && TMath::identical(before, after);
}

bool Version()
{
    static_assert(qvxsys::kVersion >= qvxsys::Version{1, 0, 0});
    std::printf("compiled with %s, runs with %s\n", QVXSYS_VERSION_STRING, qvxsys::LoadedVersionText());
    return qvxsys::LoadedVersion() >= qvxsys::kVersion;
}

} // namespace

int main()
{
    bool const ok = UpTime() && Memory() && LastError() && CpuTime() && Numbers() && Version();
    std::cout << (ok ? "ok\n" : "not as documented\n");
    return ok ? 0 : 1;
}
