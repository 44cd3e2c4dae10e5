#include "App/Translucency.h"

#include <QGuiApplication>
#include <cstdlib>
#include <memory>
#include <string_view>

#include <xcb/xcb.h>

namespace kiv {

namespace {

struct Freer {
    void operator()(void *reply) const { std::free(reply); }
};
template <class Reply>
using Owned = std::unique_ptr<Reply, Freer>;

// A compositing manager owns this selection. Two round trips to the server.
bool hasCompositor(xcb_connection_t *connection) {
    constexpr std::string_view name = "_NET_WM_CM_S0";
    const auto asked = xcb_intern_atom(connection, true, std::uint16_t(name.size()), name.data());
    const Owned<xcb_intern_atom_reply_t> atom(xcb_intern_atom_reply(connection, asked, nullptr));
    if (!atom || atom->atom == XCB_ATOM_NONE) return false;
    const auto cookie = xcb_get_selection_owner(connection, atom->atom);
    const Owned<xcb_get_selection_owner_reply_t> owner(xcb_get_selection_owner_reply(connection, cookie, nullptr));
    return owner && owner->owner != XCB_WINDOW_NONE;
}

}  // namespace

bool windowsMayBeTranslucent() {
    const auto *x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    // A platform without a server has the interface, but no connection.
    if (x11 && x11->connection()) return hasCompositor(x11->connection());
    return QGuiApplication::platformName().startsWith("wayland");
}

}  // namespace kiv
