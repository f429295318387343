#include "SharedLibrary.h"

#include <stdexcept>

#include "WindowsApi.h"

SharedLibrary::SharedLibrary(std::string const& path) : m_handle(::LoadLibraryA(path.c_str()))
{
    if (m_handle == nullptr) {
        throw std::runtime_error("cannot load " + path);
    }
}

SharedLibrary::~SharedLibrary()
{
    ::FreeLibrary(static_cast<HMODULE>(m_handle));
}

void* SharedLibrary::Symbol(char const* name) const
{
    auto const symbol = ::GetProcAddress(static_cast<HMODULE>(m_handle), name);
    if (symbol == nullptr) {
        throw std::runtime_error(std::string("no function ") + name);
    }
    return reinterpret_cast<void*>(symbol);
}
