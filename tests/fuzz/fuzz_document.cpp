// The document form: whatever the bytes, a tab or a refusal; a tab read saves and exports
// without loss.
#include "tabchecks.h"

#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    quietFuzzing();
    const auto tab = tabDataFromDocumentData(
        QByteArrayView(reinterpret_cast<const char *>(data), qsizetype(size)));
    if (tab)
        checkTabSurvivesBothForms(*tab);
    return 0;
}
