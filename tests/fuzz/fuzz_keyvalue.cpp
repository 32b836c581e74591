// The synced key-value file: values within the quota or nothing, and values read are values
// the store can write and read again unchanged.
#include "fuzzcheck.h"
#include "services/cloudkeyvaluestore.h"

#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    quietFuzzing();
    const auto values = CloudKeyValueStore::valuesFromFileData(
        QByteArrayView(reinterpret_cast<const char *>(data), qsizetype(size)));
    if (!values)
        return 0;
    FUZZ_CHECK(values->size() <= CloudKeyValueStore::maximumKeys, "a store read keeps its quota");
    const auto written = CloudKeyValueStore::fileDataForValues(*values);
    FUZZ_CHECK(written.has_value(), "values read can be written back");
    const auto again = CloudKeyValueStore::valuesFromFileData(*written);
    FUZZ_CHECK(again.has_value(), "a written store reads back");
    FUZZ_CHECK(*again == *values, "a written store keeps every value");
    return 0;
}
