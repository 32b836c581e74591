// The label file: a map of tab names to labels or nothing, and the map writes back the same.
#include "fuzzcheck.h"
#include "library/tabtagstore.h"

#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    quietFuzzing();
    const auto map = TabTagStore::tagMapFromLocalFileData(
        QByteArrayView(reinterpret_cast<const char *>(data), qsizetype(size)));
    if (!map)
        return 0;
    bool innerError = false;
    const auto again = TabTagStore::tagMapFromLocalFileData(TabTagStore::localFileData(*map),
                                                           &innerError);
    FUZZ_CHECK(again.has_value() && !innerError, "a written label file reads back");
    FUZZ_CHECK(*again == *map, "a written label file keeps every label");
    return 0;
}
