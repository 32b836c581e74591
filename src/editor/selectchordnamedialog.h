#pragma once

#include <QObject>
#include <QString>
#include <QStringList>

#include <optional>

class TabEditView;

// The dialog for a column's header, its chord name: a field of ten characters and presets.
// Done writes the name through the surface, with undo, unless nothing changed.
class SelectChordNameDialog : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool shown READ shown NOTIFY shownChanged)
    Q_PROPERTY(QString initialText READ initialText NOTIFY shownChanged)
    Q_PROPERTY(QStringList presetOptions READ presets CONSTANT)

public:
    static constexpr int charLimit = 10;
    static const QStringList presetOptions;
    static inline const QString guideUrl = u"/lutegrid/guide/#columnHeadersSection"_qs;

    explicit SelectChordNameDialog(TabEditView *surface, QObject *parent = nullptr);

    bool shown() const { return isShown; }
    QString initialText() const { return initialName.value_or(QString()); }
    QStringList presets() const { return presetOptions; }

    std::optional<QString> initialName;
    int row = -1;
    int column = -1;

    // For the header of `column` in model row `row`.
    void open(int row, int column);
    // The text a preset puts in the field; nothing for the first row, "Select preset...".
    Q_INVOKABLE QString presetText(int index) const;
    Q_INVOKABLE void done(const QString &text);
    Q_INVOKABLE void dismiss();

Q_SIGNALS:
    void shownChanged();

private:
    TabEditView *surface;
    bool isShown = false;
};
