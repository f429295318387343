// The example of TMemory.h.

#include <iostream>

#include <qvxsys/qvxsys.h>

int main()
{
    quorvex::memory::SetMemoryTrackingMode(quorvex::memory::MemoryTrackingMode::Full);
    quorvex::memory::MemoryCounter counter;
    {
        quorvex::memory::MemoryScope const scope(counter);
        TStringCore const text(u'x', 1000); // every string block comes from TRealloc
    }
    std::cout << counter.Allocated() << " bytes in " << counter.AllocatedCount() << " blocks\n";
    return counter.AllocatedCount() == 1 && counter.DeallocatedCount() == 1 ? 0 : 1;
}
