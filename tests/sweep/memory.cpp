// Memory that runs out: requests of the plug-in, and of the XML parser for it, pass by the faults. Those of the test's own
// backends do not.
#include "sweep/faults.h"

#include <pugixml.hpp>

#include <cstdlib>
#include <new>

namespace {

void *request(std::size_t size) { return sweep::Faults::memoryIsGiven() ? malloc(size == 0 ? 1 : size) : nullptr; }

[[maybe_unused]] const bool kParserAsks = (pugi::set_memory_management_functions(request, free), true);

} // namespace

void *operator new(std::size_t size) {
    if (void *made = request(size)) return made;
    throw std::bad_alloc();
}

void *operator new(std::size_t size, const std::nothrow_t &) noexcept { return request(size); }

void operator delete(void *made) noexcept { free(made); }

void operator delete(void *made, std::size_t) noexcept { free(made); }
