// The exchange form, as import and back-up restore read it.
#include "tabchecks.h"

#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    quietFuzzing();
    // The last byte picks the string count a file without a tuning gets, as the setting does.
    const int defaultStrings = size ? 4 + data[size - 1] % 5 : 6;
    const QByteArray bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    const auto tab = tabDataFromExchangeData(bytes, nullptr, defaultStrings);
    if (tab)
        checkTabSurvivesBothForms(*tab);
    return 0;
}
