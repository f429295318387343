#include "SharedLibrary.h"

#include <stdexcept>

#include <dlfcn.h>

SharedLibrary::SharedLibrary(std::string const& path) : m_handle(::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL))
{
    if (m_handle == nullptr) {
        throw std::runtime_error(::dlerror());
    }
}

SharedLibrary::~SharedLibrary()
{
    ::dlclose(m_handle);
}

void* SharedLibrary::Symbol(char const* name) const
{
    void* const symbol = ::dlsym(m_handle, name);
    if (symbol == nullptr) {
        throw std::runtime_error(::dlerror());
    }
    return symbol;
}
