// The settings file: any bytes leave usable settings, and what they save reads back the same.
#include "fuzzcheck.h"
#include "services/saveddata.h"

#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    quietFuzzing();
    // No file and no synced store: only the bytes given here are read.
    SavedData settings(QString(), nullptr);
    settings.readFileData(QByteArrayView(reinterpret_cast<const char *>(data), qsizetype(size)));
    const QByteArray written = settings.fileData();
    SavedData again(QString(), nullptr);
    again.readFileData(written);
    FUZZ_CHECK(again.fileData() == written, "saved settings read back the same");
    return 0;
}
