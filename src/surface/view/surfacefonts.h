#pragma once

#include <QFont>
#include <QString>

// The bundled fonts: a heavy geometric sans in two weights for notes, chord names and letters,
// and a monospace for lyrics. Loaded once from the resources.
class SurfaceFonts {
public:
    static void load();
    static QFont heavy(double pointSize);
    static QFont black(double pointSize);
    // The face of the capo label.
    static QFont label(double pointSize);
    static QFont mono(double pointSize);
    static QString sansFamily();
    static QString monoFamily();
};
