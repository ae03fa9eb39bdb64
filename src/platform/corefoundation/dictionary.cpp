#include "platform/corefoundation/handle_table.h"

CFTypeID CFDictionaryGetTypeID() { return platform::typeID<platform::Dictionary>(); }

CFTypeRef CFDictionaryGetValue(CFDictionaryRef dictionary, std::string_view key) {
    const platform::Dictionary *entries = platform::find<platform::Dictionary>(dictionary);
    if (entries == nullptr) return 0;
    const auto entry = entries->find(key);
    return entry == entries->end() ? 0 : entry->second.get();
}
