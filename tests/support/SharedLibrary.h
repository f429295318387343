#pragma once
// A library that is loaded at run time.

#include <string>

class SharedLibrary
{
public:
    /// Throws std::runtime_error when it cannot be loaded.
    explicit SharedLibrary(std::string const& path);
    ~SharedLibrary();
    SharedLibrary(SharedLibrary const&) = delete;
    SharedLibrary& operator=(SharedLibrary const&) = delete;

    /// The function of that name; throws std::runtime_error when there is none.
    template<class Function>
    Function* Get(char const* name) const
    {
        return reinterpret_cast<Function*>(Symbol(name));
    }

private:
    [[nodiscard]] void* Symbol(char const* name) const;

    void* m_handle;
};
