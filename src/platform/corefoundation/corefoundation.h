// The CoreFoundation calls that the plug-in uses, on 4-byte handles.
//
// The record has four bytes for a string, whatever a pointer takes, and hosts hand in what they please: so a handle is a
// slot and a generation in one 32-bit number, 0 is NULL, and one that is stale, made up, or of another type behaves as NULL.
// Objects are counted: Create and Copy calls return a count of one that the caller releases, Get calls return a borrowed
// handle. Constant objects live for ever and ignore retains and releases. One thread at a time.
#pragma once

#include "orb/vectorix.h"
#include "platform/backends.h"

#include <cstdarg>
#include <cstdint>
#include <string_view>

using CFTypeRef = uint32_t;
using CFDictionaryRef = uint32_t;
using CFNumberRef = uint32_t;
using CFPropertyListRef = uint32_t;
using CFTypeID = uint32_t;

namespace platform {

/// Decides whether an object or a buffer may be made; the process's gate lets everything pass.
class CreationGate {
public:
    virtual ~CreationGate() = default;
    virtual bool mayCreate() = 0;
};

/// Number of counted objects alive, constants not counted.
uint32_t liveObjectCount() noexcept;

/// The text behind a string handle, valid until the object is released; empty when it is none.
std::string_view stringView(CFStringRef s) noexcept;

/// A constant string for a text of static storage duration; the same handle each time.
CFStringRef constantString(const char *text) noexcept;

/// Brackets a call of the entry: objects made in it can be told from older ones.
void beginObjectEpoch() noexcept;
void endObjectEpoch() noexcept;

/// True when the object was made in the current call of the entry, so that no host can have seen it.
bool madeInThisCall(CFTypeRef object) noexcept;

} // namespace platform

enum : uint32_t { kCFStringEncodingMacRoman = 0, kCFStringEncodingASCII = 0x0600, kCFStringEncodingUTF8 = 0x08000100 };
enum CFNumberType { kCFNumberSInt32Type = 3, kCFNumberCharType = 7, kCFNumberDoubleType = 13 };

extern const CFBooleanRef kCFBooleanTrue, kCFBooleanFalse;

CFTypeID CFGetTypeID(CFTypeRef object); // 0 when it is no object
CFTypeID CFStringGetTypeID();
CFTypeID CFNumberGetTypeID();
CFTypeID CFDictionaryGetTypeID();

void CFRelease(CFTypeRef object);
CFTypeRef CFRetain(CFTypeRef object);

/// All create calls return 0 when there is no memory, or when what they are given does not make such an object.
CFStringRef CFStringCreateWithUTF8(std::string_view utf8);
CFStringRef CFStringCreateCopy(CFStringRef s);
/// printf conversions (d i u x X o c s p e E f g G with h, l, ll, z), with %@ for a CFStringRef; others are copied as they
/// stand. 0 when the outcome is not UTF-8.
CFStringRef CFStringCreateWithFormat(const char *format, ...);
CFStringRef CFStringCreateWithFormatAndArguments(CFStringRef format, va_list arguments);

/// Bytes of the text in UTF-8; 0 for NULL.
uint32_t CFStringGetLength(CFStringRef s);
/// Writes the NUL-terminated text; false, with the buffer untouched, when s is NULL, holds a character that the encoding
/// lacks, or needs more than size - 1 bytes. ASCII, UTF-8 and Mac OS Roman.
bool CFStringGetCString(CFStringRef s, char *buffer, uint32_t size, uint32_t encoding);

CFNumberRef CFNumberCreateInt64(int64_t value);

/// Stores the number converted to the type. A real is cut to an integer (not a number gives 0; what is infinite or beyond 64
/// bits, the type's nearest end); an integer beyond the type keeps its low bytes. True when nothing was lost; false, with
/// nothing stored, when number is none.
bool CFNumberGetValue(CFNumberRef number, CFNumberType type, void *value);

/// A borrowed handle, 0 when the key is absent or dictionary is none.
CFTypeRef CFDictionaryGetValue(CFDictionaryRef dictionary, std::string_view key);

/// Parses an XML property list. On failure returns 0 and stores in *errorString a new string with line and reason.
/// Document types are skipped, no entity beyond XML's own is expanded, nesting is limited to 512 levels, and a value that is
/// not wholly of its type makes the list unfit. Bounded in time and memory by size.
CFPropertyListRef CFPropertyListCreateFromXMLData(const void *bytes, uint64_t size, CFStringRef *errorString);

/// Shows a string on standard error, with a line end.
void CFShowStr(CFStringRef s);

/// The move-only owner of a counted handle.
class CFRef {
public:
    CFRef() = default;
    explicit CFRef(CFTypeRef ref) noexcept : ref_(ref) {}
    CFRef(CFRef &&other) noexcept : ref_(other.release()) {}
    CFRef &operator=(CFRef &&other) noexcept {
        reset(other.release());
        return *this;
    }
    ~CFRef() { reset(); }

    CFTypeRef get() const noexcept { return ref_; }
    explicit operator bool() const noexcept { return ref_ != 0; }
    CFTypeRef release() noexcept {
        CFTypeRef ref = ref_;
        ref_ = 0;
        return ref;
    }
    void reset(CFTypeRef ref = 0) noexcept {
        if (ref_ != 0) CFRelease(ref_);
        ref_ = ref;
    }
    /// For calls that store a new handle through a pointer.
    CFTypeRef *out() noexcept {
        reset();
        return &ref_;
    }

private:
    CFTypeRef ref_ = 0;
};
