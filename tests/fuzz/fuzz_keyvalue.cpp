// The synced key-value file: values within the quota or nothing, and values read are values
// the store can write and read again unchanged.
#include "fuzzcheck.h"
#include "services/cloudkeyvaluestore.h"

#include <QDebug>

#include <cstdint>
#include <cstdio>

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
    FUZZ_CHECK(again->keys() == values->keys(), "a written store keeps every key");
    // Compared as the file they write: a real that is not a number is equal to nothing, not
    // even to itself, yet comes back bit for bit.
    const auto rewritten = CloudKeyValueStore::fileDataForValues(*again);
    if (rewritten != written) {
        QString text;
        QDebug(&text) << *values << "\nread back as\n" << *again;
        std::fprintf(stderr, "%s\n", qPrintable(text));
        FUZZ_CHECK(false, "a written store keeps every value");
    }
    return 0;
}
