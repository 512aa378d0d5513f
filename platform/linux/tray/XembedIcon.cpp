#include "platform/linux/tray/XembedIcon.h"

#include "platform/linux/x11/X11Property.h"

#include <QPainter>

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <span>
#include <string_view>
#include <utility>

namespace LinuxPlatform {
namespace {

constexpr std::uint32_t requestDock = 0;
constexpr std::uint32_t embedProtocolVersion = 0;
constexpr std::uint32_t embedMapped = 1;
constexpr std::uint8_t alphaDepth = 32;
/// What trays give an icon that asks for nothing.
constexpr double preferredSize = 22;
/// No panel is as thick, and a wrong size must not cost memory.
constexpr QSize largestSize(1024, 1024);

std::optional<QImage::Format> format(std::uint8_t depth) {
    switch (depth) {
    case 16:
        return QImage::Format_RGB16;
    case 24:
        return QImage::Format_RGB32;
    case alphaDepth:
        return QImage::Format_ARGB32_Premultiplied;
    default:
        return std::nullopt;
    }
}

/// Null when the server will not tell, as for what is not on the screen.
QImage readPixels(const X11Connection& connection, xcb_window_t window, const QRect& area) {
    const XcbPointer<xcb_get_image_reply_t> reply(xcb_get_image_reply(
        connection.get(),
        xcb_get_image(connection.get(), XCB_IMAGE_FORMAT_Z_PIXMAP, window,
                      static_cast<std::int16_t>(area.x()), static_cast<std::int16_t>(area.y()),
                      static_cast<std::uint16_t>(area.width()), static_cast<std::uint16_t>(area.height()),
                      ~0U),
        nullptr));
    const auto pixelFormat = reply ? format(reply->depth) : std::nullopt;
    if (!pixelFormat) {
        return {};
    }
    const QImage view(xcb_get_image_data(reply.get()), area.width(), area.height(), *pixelFormat);
    return view.sizeInBytes() <= xcb_get_image_data_length(reply.get()) ? view.copy() : QImage();
}

/// Absent when mostly something else shines through.
std::optional<QColor> averageColor(const QImage& image) {
    if (image.isNull()) {
        return std::nullopt;
    }
    const auto color = image.scaled(1, 1, Qt::IgnoreAspectRatio, Qt::SmoothTransformation).pixelColor(0, 0);
    return color.alphaF() < 0.5F ? std::nullopt : std::optional(color);
}

std::vector<std::uint32_t> readNumbers(X11Connection& connection, xcb_window_t window, xcb_atom_t property,
                                       xcb_atom_t type, std::uint32_t length) {
    const auto reply = connection.reply<xcb_get_property_reply>(
        xcb_get_property(connection.get(), 0, window, property, type, 0, length));
    const auto numbers = numbersIn(reply.get());
    return {numbers.begin(), numbers.end()};
}

/// The one nearest to `wanted` for which there is a drawing, among those up to `largest`; beside them all,
/// the wanted one.
int drawnSize(double wanted, int largest) {
    const auto distance = [&](int size) -> double {
        return size <= largest ? std::abs(size - wanted) : largest;
    };
    const int nearest = *std::ranges::min_element(trayIconSizes, {}, distance);
    const bool isBeside = nearest > largest || wanted > trayIconSizes.back();
    return isBeside ? static_cast<int>(std::lround(wanted)) : nearest;
}

} // namespace

XembedIcon::XembedIcon(X11Connection& connection, xcb_window_t manager, TrayIconContent content,
                       const TrayToolkit& toolkit, const TemplateTint& tint)
    : connection_(connection),
      manager_(manager),
      content_(std::move(content)),
      toolkit_(toolkit),
      tint_(tint) {
    static constexpr std::array<std::string_view, 7> names{"_NET_SYSTEM_TRAY_OPCODE",
                                                           "_NET_SYSTEM_TRAY_VISUAL",
                                                           "_NET_SYSTEM_TRAY_COLORS",
                                                           "_XEMBED_INFO",
                                                           "_NET_WM_NAME",
                                                           "UTF8_STRING",
                                                           "_NET_WM_PID"};
    const auto atoms = connection.atoms(names);
    atoms_ = {atoms[0], atoms[1], atoms[2], atoms[3], atoms[4], atoms[5], atoms[6]};
    visual_ = chooseVisual();
    events_ = connection.addEventHandler([this](const auto& event) { handle(event); });
    create(visual_);
    describe();
    dock();
    connection_.flush();
}

XembedIcon::~XembedIcon() {
    xcb_destroy_window(connection_.get(), window_);
    xcb_free_gc(connection_.get(), graphics_);
    if (colormap_ != XCB_NONE) {
        xcb_free_colormap(connection_.get(), colormap_);
    }
    connection_.flush();
}

XembedIcon::Visual XembedIcon::chooseVisual() const {
    const auto& screen = connection_.screen();
    const auto wanted = readNumbers(connection_, manager_, atoms_.visual, XCB_ATOM_VISUALID, 1);
    for (auto depths = xcb_screen_allowed_depths_iterator(&screen); !wanted.empty() && depths.rem > 0;
         xcb_depth_next(&depths)) {
        const std::span visuals(xcb_depth_visuals(depths.data),
                                static_cast<std::size_t>(xcb_depth_visuals_length(depths.data)));
        if (std::ranges::any_of(visuals,
                                [&](const auto& visual) { return visual.visual_id == wanted.front(); })) {
            return {wanted.front(), depths.data->depth};
        }
    }
    return {screen.root_visual, screen.root_depth};
}

void XembedIcon::create(Visual visual) {
    auto* const connection = connection_.get();
    const auto& screen = connection_.screen();
    window_ = xcb_generate_id(connection);
    const auto side = static_cast<std::uint16_t>(std::lround(preferredSize * toolkit_.pixelsPerPoint));
    size_ = QSize(side, side);
    // The panel's own ground shows through: by the parent's pixels, or because nothing is drawn over it.
    auto colormap = screen.default_colormap;
    std::uint32_t mask = XCB_CW_BACK_PIXMAP;
    std::array<std::uint32_t, 4> values{XCB_BACK_PIXMAP_PARENT_RELATIVE, 0, 0, 0};
    if (visual.identifier != screen.root_visual) {
        colormap_ = xcb_generate_id(connection);
        xcb_create_colormap(connection, XCB_COLORMAP_ALLOC_NONE, colormap_, screen.root, visual.identifier);
        colormap = colormap_;
        mask = XCB_CW_BACK_PIXEL;
        values[0] = 0;
    }
    mask |= XCB_CW_BORDER_PIXEL | XCB_CW_EVENT_MASK | XCB_CW_COLORMAP;
    values[2] = XCB_EVENT_MASK_EXPOSURE | XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_BUTTON_PRESS |
                XCB_EVENT_MASK_BUTTON_RELEASE;
    values[3] = colormap;
    xcb_create_window(connection, visual.depth, window_, screen.root, -1, -1, side, side, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, visual.identifier, mask, values.data());
    graphics_ = xcb_generate_id(connection);
    xcb_create_gc(connection, graphics_, window_, 0, nullptr);
}

void XembedIcon::describe() const {
    auto* const connection = connection_.get();
    static constexpr std::string_view name = "Curtain";
    static constexpr std::string_view className("curtain\0Curtain\0", 16);
    static constexpr std::uint32_t minimumSizeIsGiven = 1U << 4;
    const auto setText = [&](xcb_atom_t property, xcb_atom_t type, std::string_view text) {
        xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window_, property, type, 8,
                            static_cast<std::uint32_t>(text.size()), text.data());
    };
    const auto setNumbers = [&](xcb_atom_t property, xcb_atom_t type,
                                std::span<const std::uint32_t> numbers) {
        xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window_, property, type, 32,
                            static_cast<std::uint32_t>(numbers.size()), numbers.data());
    };
    setText(XCB_ATOM_WM_NAME, XCB_ATOM_STRING, name);
    setText(atoms_.name, atoms_.utf8, name);
    setText(XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, className);
    setNumbers(atoms_.processID, XCB_ATOM_CARDINAL, std::array{static_cast<std::uint32_t>(getpid())});
    std::array<std::uint32_t, 18> hints{minimumSizeIsGiven};
    hints[5] = static_cast<std::uint32_t>(size_.width());
    hints[6] = static_cast<std::uint32_t>(size_.height());
    setNumbers(XCB_ATOM_WM_NORMAL_HINTS, XCB_ATOM_WM_SIZE_HINTS, hints);
    setNumbers(atoms_.embedInfo, atoms_.embedInfo, std::array{embedProtocolVersion, embedMapped});
}

void XembedIcon::dock() const {
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = manager_;
    message.type = atoms_.opcode;
    message.data.data32[0] = XCB_CURRENT_TIME;
    message.data.data32[1] = requestDock;
    message.data.data32[2] = window_;
    xcb_send_event(connection_.get(), 0, manager_, XCB_EVENT_MASK_NO_EVENT,
                   reinterpret_cast<const char*>(&message));
}

void XembedIcon::handle(const xcb_generic_event_t& event) {
    switch (event.response_type & 0x7FU) {
    case XCB_EXPOSE: {
        const auto& exposure = reinterpret_cast<const xcb_expose_event_t&>(event);
        if (exposure.window == window_ && exposure.count == 0) {
            readSurroundings();
            draw();
        }
        break;
    }
    case XCB_CONFIGURE_NOTIFY: {
        const auto& change = reinterpret_cast<const xcb_configure_notify_event_t&>(event);
        if (change.window == window_) {
            // An exposure follows when there is something to draw anew.
            size_ = QSize(change.width, change.height).boundedTo(largestSize);
        }
        break;
    }
    case XCB_REPARENT_NOTIFY:
        reparented(reinterpret_cast<const xcb_reparent_notify_event_t&>(event));
        break;
    case XCB_BUTTON_RELEASE:
        released(reinterpret_cast<const xcb_button_release_event_t&>(event));
        break;
    case XCB_PROPERTY_NOTIFY: {
        const auto& change = reinterpret_cast<const xcb_property_notify_event_t&>(event);
        if (change.window == manager_ && change.atom == atoms_.colors) {
            readSurroundings();
            draw();
        }
        break;
    }
    default:
        break;
    }
}

void XembedIcon::reparented(const xcb_reparent_notify_event_t& event) {
    if (event.window != window_) {
        return;
    }
    parent_ = event.parent;
    if (parent_ == connection_.root()) {
        // A tray that ends gives its icons back, and they would stand on the desktop.
        xcb_unmap_window(connection_.get(), window_);
        connection_.flush();
    }
}

void XembedIcon::released(const xcb_button_release_event_t& event) {
    const QRect icon(QPoint(0, 0), size_);
    if (event.event != window_ || !icon.contains(event.event_x, event.event_y)) {
        return;
    }
    Platform::Event click;
    if (event.detail == XCB_BUTTON_INDEX_1) {
        click.type = Platform::EventType::leftMouseUp;
    } else if (event.detail == XCB_BUTTON_INDEX_2) {
        click.type = Platform::EventType::otherMouseUp;
    } else if (event.detail == XCB_BUTTON_INDEX_3) {
        click.type = Platform::EventType::rightMouseUp;
    } else {
        return;
    }
    if ((event.state & XCB_MOD_MASK_CONTROL) != 0) {
        click.modifierFlags |= Platform::EventModifier::control;
    }
    content_.onClick(click, geometry().value_or(QRect()));
}

void XembedIcon::setImage(const Platform::Image& image) {
    content_.image = image;
    draw();
}

void XembedIcon::updateTint() {
    draw();
}

void XembedIcon::readSurroundings() {
    const QRect icon(QPoint(0, 0), size_);
    look_.foreground = managersColor();
    if (visual_.depth == alphaDepth) {
        const XcbPointer<xcb_get_geometry_reply_t> inParent(
            xcb_get_geometry_reply(connection_.get(), xcb_get_geometry(connection_.get(), window_), nullptr));
        look_.background =
            inParent && parent_ != XCB_WINDOW_NONE
                ? averageColor(readPixels(connection_, parent_, icon.translated(inParent->x, inParent->y)))
                : std::nullopt;
        ground_ = QImage(size_, QImage::Format_ARGB32_Premultiplied);
        ground_.fill(Qt::transparent);
        return;
    }
    xcb_clear_area(connection_.get(), 0, window_, 0, 0, 0, 0);
    ground_ = readPixels(connection_, window_, icon);
    look_.background = averageColor(ground_);
}

std::optional<QColor> XembedIcon::managersColor() const {
    const auto values = readNumbers(connection_, manager_, atoms_.colors, XCB_ATOM_CARDINAL, 12);
    if (values.size() < 3) {
        return std::nullopt;
    }
    const auto component = [&](std::size_t index) { return static_cast<quint16>(values[index]); };
    return QColor::fromRgba64(component(0), component(1), component(2));
}

void XembedIcon::draw() {
    if (ground_.isNull()) {
        return;
    }
    // As large as in a menu bar, and on tall panels in proportion to them.
    const int side = std::min(ground_.width(), ground_.height());
    const double natural = content_.image.width > 0 ? content_.image.width * toolkit_.pixelsPerPoint : side;
    const int iconSide = drawnSize(std::max(std::min<double>(side, natural), side * 2 / 3.0), side);
    auto canvas = ground_;
    const auto picture = toolkit_.render(content_.image, tint_.colorOn(look_), iconSide);
    QPainter painter(&canvas);
    painter.drawImage((canvas.width() - iconSide) / 2, (canvas.height() - iconSide) / 2, picture);
    painter.end();
    xcb_put_image(connection_.get(), XCB_IMAGE_FORMAT_Z_PIXMAP, window_, graphics_,
                  static_cast<std::uint16_t>(canvas.width()), static_cast<std::uint16_t>(canvas.height()), 0,
                  0, 0, visual_.depth, static_cast<std::uint32_t>(canvas.sizeInBytes()), canvas.constBits());
    connection_.flush();
}

std::optional<QRect> XembedIcon::geometry() const {
    const bool isInTray = parent_ != XCB_WINDOW_NONE && parent_ != connection_.root();
    if (!isInTray) {
        return std::nullopt;
    }
    const XcbPointer<xcb_translate_coordinates_reply_t> origin(xcb_translate_coordinates_reply(
        connection_.get(), xcb_translate_coordinates(connection_.get(), window_, connection_.root(), 0, 0),
        nullptr));
    return origin ? std::optional(QRect(QPoint(origin->dst_x, origin->dst_y), size_)) : std::nullopt;
}

} // namespace LinuxPlatform
