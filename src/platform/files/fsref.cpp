#include "platform/files/fsref.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <memory>
#include <new>
#include <sys/stat.h>
#include <unistd.h>
#include <unordered_map>

namespace platform {

namespace {

// What the 80 bytes of a reference hold. The path itself may be longer than they are.
struct RefLayout {
    char tag[8];
    uint32_t index; // of the path
    uint32_t zero;
    uint64_t check; // hash of the path: a reference of another process is refused unless it names the same file
    uint8_t rest[56];
};
static_assert(sizeof(RefLayout) == sizeof(ORB_FSRef));

constexpr char kTag[8] = {'O', 'R', 'B', 'f', 'i', 'l', 'e', '1'};

struct Interned {
    std::deque<std::string> paths;
    std::unordered_map<std::string, uint32_t> indexes;
};

Interned &interned() {
    static Interned &paths = *new Interned; // never destroyed: references live as long as the process
    return paths;
}

uint64_t checkOf(const std::string &path) noexcept {
    uint64_t hash = 0xCBF29CE484222325; // FNV-1a
    for (char c : path)
        hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3;
    return hash;
}

RefLayout layoutOf(uint32_t index, const std::string &path) noexcept {
    RefLayout layout = {};
    memcpy(layout.tag, kTag, sizeof kTag);
    layout.index = index;
    layout.check = checkOf(path);
    return layout;
}

} // namespace

const std::string *pathOfFSRef(const ORB_FSRef &ref) noexcept {
    RefLayout layout;
    memcpy(&layout, &ref, sizeof layout);
    if (memcmp(layout.tag, kTag, sizeof kTag) != 0 || layout.index >= interned().paths.size()) return nullptr;
    const std::string &path = interned().paths[layout.index];
    const RefLayout expected = layoutOf(layout.index, path);
    return memcmp(&layout, &expected, sizeof layout) == 0 ? &path : nullptr;
}

OSErr internFSRef(const std::string &absolutePath, ORB_FSRef *ref) {
    if (ref == nullptr || absolutePath.empty()) return paramErr;
    try {
        Interned &table = interned();
        auto known = table.indexes.find(absolutePath);
        if (known == table.indexes.end()) {
            // Should the second step find no memory, the path stays in the list, unused.
            table.paths.push_back(absolutePath);
            known = table.indexes.emplace(absolutePath, static_cast<uint32_t>(table.paths.size() - 1)).first;
        }
        const RefLayout layout = layoutOf(known->second, absolutePath);
        memcpy(ref, &layout, sizeof layout);
        return noErr;
    } catch (const std::bad_alloc &) {
        return memFullErr;
    }
}

OSErr makeFSRef(const char *path, ORB_FSRef *ref) {
    if (path == nullptr || *path == '\0' || ref == nullptr) return paramErr;
    struct stat status;
    if (::stat(path, &status) != 0) return fileErrorOf(errno);
    try {
        std::string absolute;
        if (*path != '/') {
            const std::unique_ptr<char, void (*)(void *)> directory(::getcwd(nullptr, 0), free);
            if (!directory) return fileErrorOf(errno);
            absolute.append(directory.get()).append(1, '/');
        }
        absolute += path; // with its "..": behind a symbolic link that is not the directory above in the text
        return internFSRef(absolute, ref);
    } catch (const std::bad_alloc &) {
        return memFullErr;
    }
}

OSErr fileErrorOf(int errnoValue) noexcept {
    struct Row {
        int error;
        OSErr code;
    };
    constexpr Row kRows[] = {
        {ENOENT, fnfErr},        {ENOTDIR, fnfErr},      {ELOOP, fnfErr},         {ENAMETOOLONG, fnfErr}, {EACCES, permErr},
        {EPERM, permErr},        {EMFILE, tmfoErr},      {ENFILE, tmfoErr},       {ENOMEM, memFullErr},   {EINVAL, paramErr},
        {EISDIR, errFSNotAFile}, {ENXIO, errFSNotAFile}, {ENODEV, errFSNotAFile},
    };
    for (const Row &row : kRows) {
        if (row.error == errnoValue) return row.code;
    }
    return ioErr;
}

} // namespace platform
