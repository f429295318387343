#include <qvxsys/StaticRepository.h>

#include <atomic>
#include <list>
#include <memory>
#include <type_traits>
#include <unordered_map>

#include <boost/any.hpp>

#include <qvxsys/QuorvexException.h>
#include <qvxsys/TLocks.h>

#include "LogicAssert.h"
#include "ThrowSite.h"

using qvxsys::error::ThrowSite;

// One recursive mutex guards everything, creation and destruction of objects included. A second one for the
// repository's own coming and going would be taken before it by DeinitializeStaticRepository and after it by InitOnce
// inside a create function.
namespace {

using Create = boost::any* (*)(void*);
using Extract = void* (*)(boost::any*);

enum class Phase {
    Absent,
    Present,
    Ending, ///< objects are being destroyed, under the mutex
    Ended,
};

/// When an object takes its place in the order of destruction.
enum class Place {
    WhenBegun,
    WhenComplete,
};

struct Repository
{
    std::unordered_map<void**, std::unique_ptr<boost::any>> holders; ///< by slot; null while it is being created
    std::list<void**> newestFirst;
};

struct State
{
    TRecursiveMutex mutex;
    std::atomic<Phase> phase = Phase::Absent; ///< written under the mutex
    Repository* repository = nullptr;         ///< there while the phase is Present or Ending
    int creations = 0;                        ///< under way, one inside the other, all on the thread that has the mutex
};

// Nothing is made at start and nothing destroyed at exit, when threads may still ask for objects.
constinit State g_state;
static_assert(std::is_trivially_destructible_v<State>);

void* Read(void** slot) noexcept
{
    return std::atomic_ref<void*>(*slot).load(std::memory_order_acquire);
}

void Write(void** slot, void* object) noexcept
{
    std::atomic_ref<void*>(*slot).store(object, std::memory_order_release);
}

bool IsOver(Phase phase) noexcept
{
    return phase == Phase::Ending || phase == Phase::Ended;
}

void Open()
{
    g_state.repository = new Repository;
    g_state.phase = Phase::Present;
}

/// An entry without an object, which is taken back unless it gets one.
class Creation
{
public:
    explicit Creation(void** slot) : m_repository(*g_state.repository), m_slot(slot)
    {
        std::list<void**> node(1, slot);
        m_holder = &m_repository.holders[slot]; // stays where it is when the table grows
        m_node = node.begin();
        m_repository.newestFirst.splice(m_repository.newestFirst.begin(), node);
        ++g_state.creations;
    }
    Creation(Creation const&) = delete;
    Creation& operator=(Creation const&) = delete;
    ~Creation()
    {
        --g_state.creations;
        if (*m_holder == nullptr) {
            m_repository.newestFirst.erase(m_node);
            m_repository.holders.erase(m_slot);
        }
    }

    boost::any* Run(Create create, void* arg, Place place)
    {
        m_holder->reset(create(arg));
        if (place == Place::WhenComplete) {
            auto& order = m_repository.newestFirst;
            order.splice(order.begin(), order, m_node);
        }
        return m_holder->get();
    }

private:
    Repository& m_repository;
    void** m_slot;
    std::unique_ptr<boost::any>* m_holder;
    std::list<void**>::iterator m_node;
};

/// The holder of a slot, created if need be; null when nothing was. Under the mutex.
boost::any* HolderOf(void** slot, Create create, void* arg, Place place)
{
    auto const found = g_state.repository->holders.find(slot);
    if (found == g_state.repository->holders.end()) {
        return Creation(slot).Run(create, arg, place);
    }
    if (found->second == nullptr) {
        throw QuorvexException(u"InitOnce: the object is needed for its own creation.", ThrowSite(0x50D0BB91));
    }
    return found->second.get();
}

void Init(void** slot, Create create, void* arg, Extract extract, Place place)
{
    if (slot == nullptr || Read(slot) != nullptr) {
        return;
    }
    if (IsOver(g_state.phase)) {
        return; // without the mutex: whoever destroys the objects may be waiting for this thread
    }
    QVX_LOGIC_ASSERT(create != nullptr && extract != nullptr);
    if (create == nullptr || extract == nullptr) {
        return;
    }
    TLockScope const lock(g_state.mutex);
    if (IsOver(g_state.phase) || Read(slot) != nullptr) {
        return;
    }
    if (g_state.phase == Phase::Absent) {
        Open();
    }
    if (boost::any* const holder = HolderOf(slot, create, arg, place)) {
        Write(slot, extract(holder));
    }
}

/// What InitStaticObject is given, on its way through InitOnce's interface.
struct Maker
{
    void* (*make)(void*);
    void* context;
    void (*destroy)(void*) noexcept;
};

using Owner = std::shared_ptr<void>; // what a boost::any holds can be copied

boost::any* CreateOwner(void* arg)
{
    Maker const& maker = *static_cast<Maker const*>(arg);
    auto holder = std::make_unique<boost::any>();
    void* const object = maker.make(maker.context);
    if (object == nullptr) {
        return nullptr;
    }
    *holder = Owner(object, maker.destroy);
    return holder.release();
}

void* ExtractFromOwner(boost::any* holder)
{
    return boost::any_cast<Owner>(holder)->get();
}

} // namespace

void InitializeStaticRepository()
{
    if (g_state.phase == Phase::Present) {
        return;
    }
    TLockScope const lock(g_state.mutex);
    if (g_state.phase == Phase::Absent || g_state.phase == Phase::Ended) {
        Open();
    }
}

void DeinitializeStaticRepository()
{
    TLockScope const lock(g_state.mutex);
    if (g_state.phase != Phase::Present) {
        return;
    }
    if (g_state.creations != 0) {
        throw QuorvexException(u"DeinitializeStaticRepository: an object is being created.", ThrowSite(0x8964FD20));
    }
    g_state.phase = Phase::Ending;
    Repository& repository = *g_state.repository;
    while (!repository.newestFirst.empty()) {
        void** const slot = repository.newestFirst.front();
        repository.newestFirst.pop_front();
        static_cast<void>(repository.holders.extract(slot)); // the object's destructor runs here
        Write(slot, nullptr);
    }
    delete g_state.repository;
    g_state.repository = nullptr;
    g_state.phase = Phase::Ended;
}

void InitOnce(void** slot, boost::any* (*create)(void*), void* arg, void* (*extract)(boost::any*))
{
    Init(slot, create, arg, extract, Place::WhenBegun);
}

namespace qvxsys::detail {

void InitStaticObject(void** slot, void* (*make)(void*), void* context, void (*destroy)(void*) noexcept)
{
    Maker maker{make, context, destroy};
    Init(slot, &CreateOwner, &maker, &ExtractFromOwner, Place::WhenComplete);
}

} // namespace qvxsys::detail
