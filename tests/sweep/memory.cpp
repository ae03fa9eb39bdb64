// Memory that runs out: the plug-in's, and the XML parser's for it. What the stand-ins ask for is given.
#include "stand_in/fate.h"

#include <cstdlib>
#include <new>
#include <pugixml.hpp>

namespace {

void *request(std::size_t size) {
    if (stand_in::Fate::current != nullptr && stand_in::Step::underWay == 0) {
        const stand_in::Step step(stand_in::Seam::Other, "memory");
        if (step.fails()) return nullptr;
    }
    return malloc(size == 0 ? 1 : size);
}

[[maybe_unused]] const bool kParserAsks = (pugi::set_memory_management_functions(request, free), true);

} // namespace

void *operator new(std::size_t size) {
    if (void *made = request(size)) return made;
    throw std::bad_alloc();
}

void *operator new(std::size_t size, const std::nothrow_t &) noexcept { return request(size); }

void operator delete(void *made) noexcept { free(made); }

void operator delete(void *made, std::size_t) noexcept { free(made); }
