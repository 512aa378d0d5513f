#pragma once

#include "Curtain/AppCatalog.h"
#include "Curtain/DesktopChecker.h"
#include "core/PreferencesStore.h"
#include "core/ReadinessChecklist.h"
#include "platform/Workspace.h"

#include <QObject>

#include <functional>
#include <optional>

namespace Curtain {

/// Whether a check has been made, and its outcome.
struct ProviderReadiness {
    bool evaluated = false;
    bool ok = false;

    bool operator==(const ProviderReadiness&) const = default;
};

/// Owns the current readiness state. Main thread only.
class ReadinessCoordinator : public QObject {
    Q_OBJECT

public:
    /// The services outlive the coordinator. Nothing is asked before the first refresh.
    ReadinessCoordinator(CurtainCore::PreferencesStore& store, Platform::Workspace& workspace,
                         const DesktopController& desktop, const DesktopChecker& desktopChecker);

    std::function<bool()> isPrivacyModeActive;
    /// Whether a share that was noticed has switched it on.
    std::function<bool()> isPrivacyModeAutomatic;
    /// Whether the desktop shows no notices now; absent where it does not say.
    std::function<std::optional<bool>()> isDoNotDisturbOn;
    std::function<ProviderReadiness()> cameraReadinessProvider;
    std::function<ProviderReadiness()> micReadinessProvider;

    const CurtainCore::ReadinessState& state() const { return state_; }

    /// Gathers the facts and publishes the new state, with one announcement.
    void refresh();
    /// Makes an app private, or no longer private; then refreshes.
    void toggleTargetApp(const CatalogEntry& entry);

Q_SIGNALS:
    void stateChanged();
    /// The list is stored already.
    void privateAppAdded(const std::string& bundleID);
    void privateAppRemoved(const std::string& bundleID);

private:
    CurtainCore::PreferencesStore& store_;
    Platform::Workspace& workspace_;
    const DesktopController& desktop_;
    const DesktopChecker& desktopChecker_;
    CurtainCore::ReadinessChecklistEngine engine_;
    CurtainCore::ReadinessState state_;
};

} // namespace Curtain
