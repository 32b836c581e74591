// Plain-text import: any text gives a tab or the no-tab message, and the tab it gives is one
// the program can save and export.
#include "tabchecks.h"
#include "export/asciitabreader.h"

#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    quietFuzzing();
    const AsciiTabResult result = AsciiTabReader::read(
        QString::fromUtf8(reinterpret_cast<const char *>(data), qsizetype(size)));
    FUZZ_CHECK(result.tab.has_value() || !result.message.isEmpty(),
               "a text without a tab says why");
    if (result.tab)
        checkTabSurvivesBothForms(*result.tab);
    return 0;
}
