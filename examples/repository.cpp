// The example of StaticRepository.h.

#include <iostream>
#include <map>
#include <string>

#include <qvxsys/qvxsys.h>

namespace {

class Cache
{
public:
    void Store(std::string const& key, int value) { m_values[key] = value; }
    std::size_t Size() const { return m_values.size(); }

private:
    std::map<std::string, int> m_values;
};

struct Codec
{
    std::string name;
};

constinit TStaticObject<Cache> g_cache; // nothing runs before main
constinit TStaticObject<Codec const> g_codec;

bool Work()
{
    Cache* const cache = g_cache.Get(); // made by the first call, of whatever thread
    Codec const* const codec = g_codec.Get([] { return Codec{"utf-8"}; });
    if (cache == nullptr || codec == nullptr) {
        return false; // the process is shutting down
    }
    cache->Store(codec->name, 1);
    return cache->Size() == 1;
}

} // namespace

int main()
{
    InitializeStaticRepository(); // optional: the first use does it
    bool const worked = Work() && Work();
    DeinitializeStaticRepository(); // newest first
    bool const ok = worked && !Work() && g_cache.Peek() == nullptr;
    std::cout << (ok ? "ok\n" : "not as documented\n");
    return ok ? 0 : 1;
}
