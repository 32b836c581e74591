#include "surfacefonts.h"

#include <QFontDatabase>
#include <QStringList>

#include <algorithm>

namespace {

QString sans;
QString monospace;

QFont make(const QString &family, QFont::Weight weight, double size)
{
    QFont font(family);
    font.setWeight(weight);
    // Sizes are in points of the surface, which are the scene's pixels.
    font.setPixelSize(std::max(1, qRound(size)));
    font.setHintingPreference(QFont::PreferNoHinting);
    return font;
}

} // namespace

void SurfaceFonts::load()
{
    if (!sans.isEmpty())
        return;
    for (const char *file : {":/fonts/LeagueSpartan-Bold.otf", ":/fonts/LeagueSpartan-Black.otf",
                             ":/fonts/LeagueSpartan-ExtraBold.otf"}) {
        const int id = QFontDatabase::addApplicationFont(QString::fromLatin1(file));
        if (id >= 0 && sans.isEmpty())
            sans = QFontDatabase::applicationFontFamilies(id).value(0);
    }
    const int id = QFontDatabase::addApplicationFont(u":/fonts/JetBrainsMono-Regular.ttf"_qs);
    if (id >= 0)
        monospace = QFontDatabase::applicationFontFamilies(id).value(0);
    if (sans.isEmpty())
        sans = u"sans-serif"_qs;
    if (monospace.isEmpty())
        monospace = u"monospace"_qs;
}

QString SurfaceFonts::sansFamily()
{
    load();
    return sans;
}

QString SurfaceFonts::monoFamily()
{
    load();
    return monospace;
}

QFont SurfaceFonts::heavy(double pointSize)
{
    return make(sansFamily(), QFont::Bold, pointSize);
}

QFont SurfaceFonts::black(double pointSize)
{
    return make(sansFamily(), QFont::Black, pointSize);
}

QFont SurfaceFonts::label(double pointSize)
{
    return make(sansFamily(), QFont::ExtraBold, pointSize);
}

QFont SurfaceFonts::mono(double pointSize)
{
    return make(monoFamily(), QFont::Normal, pointSize);
}
