#pragma once

#include "platform/Subscription.h"
#include "platform/linux/tray/TemplateTint.h"
#include "platform/linux/tray/TrayIcon.h"
#include "platform/linux/x11/X11Connection.h"

#include <QImage>
#include <QRect>
#include <QSize>

#include <optional>

namespace LinuxPlatform {

/// A tray icon as a small window that the tray's manager takes into its panel.
class XembedIcon : public TrayIcon {
public:
    /// The references outlive the icon. The manager's property changes are among the connection's events.
    XembedIcon(X11Connection& connection, xcb_window_t manager, TrayIconContent content,
               const TrayToolkit& toolkit, const TemplateTint& tint);
    ~XembedIcon() override;
    XembedIcon(const XembedIcon&) = delete;
    XembedIcon& operator=(const XembedIcon&) = delete;

    void setImage(const Platform::Image& image) override;
    /// These panels leave tips to the icon's own windows, and there are none.
    void setToolTip(const QString& /*text*/) override {}
    std::optional<QRect> geometry() const override;
    void updateTint() override;

private:
    struct Atoms {
        xcb_atom_t opcode;
        xcb_atom_t visual;
        xcb_atom_t colors;
        xcb_atom_t embedInfo;
        xcb_atom_t name;
        xcb_atom_t utf8;
        xcb_atom_t processID;
    };
    struct Visual {
        xcb_visualid_t identifier;
        std::uint8_t depth;
    };

    Visual chooseVisual() const;
    void create(Visual visual);
    void describe() const;
    void dock() const;

    void handle(const xcb_generic_event_t& event);
    void released(const xcb_button_release_event_t& event);
    void reparented(const xcb_reparent_notify_event_t& event);

    void readSurroundings();
    std::optional<QColor> managersColor() const;
    void draw();

    X11Connection& connection_;
    xcb_window_t manager_;
    TrayIconContent content_;
    const TrayToolkit& toolkit_;
    const TemplateTint& tint_;
    Atoms atoms_;
    Visual visual_;
    xcb_window_t window_ = XCB_WINDOW_NONE;
    xcb_colormap_t colormap_ = XCB_NONE;
    xcb_gcontext_t graphics_ = XCB_NONE;
    xcb_window_t parent_ = XCB_WINDOW_NONE;
    QSize size_;
    /// What the icon is drawn on; null when it could not be read.
    QImage ground_;
    PanelLook look_;
    Platform::Subscription events_;
};

} // namespace LinuxPlatform
