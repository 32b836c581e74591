#pragma once

#include <QObject>
#include <QString>
#include <QTimer>

#include <atomic>
#include <optional>

class SavedData;

// Decides which folder holds the tabs: "Documents" in the folder that the user's sync client
// keeps in step across machines, or "Local" in the document folder. The synced folder is the
// setting "cloudfolderkey"; while it is set and exists there is a cloud identity.
class iCloudManager : public QObject {
    Q_OBJECT

public:
    static inline const QString cloudDocumentsFolderName = u"Documents"_qs;
    static inline const QString localFolderName = u"Local"_qs;

    static iCloudManager &shared();
    explicit iCloudManager(SavedData &settings);

    // The synced folder, when one is set and exists.
    std::optional<QString> ubiquityIdentityToken() const;

    std::optional<QString> currentiCloudToken;
    // Written only on the main thread; the search itself runs on a worker.
    std::optional<QString> iCloudContainerUrl;
    std::atomic<bool> retrievingCloudContainer = false;

    // Finds the storage folder anew: on a worker when the synced folder is to be used, since
    // a network or sync mount can take long to answer; otherwise at once.
    void findCloudContainer();

    // Looks every `intervalMs` whether the synced folder has come or gone (a disk unmounted, a
    // sync client's folder removed or made), and follows it as an account change.
    void startWatchingAvailability(int intervalMs = 2000);
    // One look; true if the folder's availability had changed.
    bool checkAvailability();

public Q_SLOTS:
    // For whoever changes the synced folder setting, or notices it come or go.
    void iCloudAccountAvailabilityChanged();

Q_SIGNALS:
    // The storage folder has been settled (it may be the same as before).
    void containerSettled();

private:
    void setCloudContainer(const std::optional<QString> &url);
    void placeKeyValueStore();

    SavedData &settings;
    QTimer availabilityTimer;
    quint64 searchGeneration = 0;
};
