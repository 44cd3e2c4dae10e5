#include <QGuiApplication>
#include <QKeyEvent>
#include <memory>
#include <utility>

#include <xkbcommon/xkbcommon-x11.h>
#include <xkbcommon/xkbcommon.h>

#include "App/Commands/Letters.h"
#include "App/Keyboard.h"

namespace kiv {

namespace {

template <auto release>
struct Releaser {
    template <class T>
    void operator()(T *handle) const {
        release(handle);
    }
};
using Context = std::unique_ptr<xkb_context, Releaser<xkb_context_unref>>;
using Keymap = std::unique_ptr<xkb_keymap, Releaser<xkb_keymap_unref>>;
using State = std::unique_ptr<xkb_state, Releaser<xkb_state_unref>>;

enum class Level { plain, shifted };

// The keyboard as the X server knows it. Letters of other scripts than the Latin give way to what the key gives in another of
// the user's layouts, or else on a common keyboard: shortcuts are Latin letters.
class XkbKeyboard : public Keyboard {
public:
    explicit XkbKeyboard(xcb_connection_t *connection) : connection_(connection) {}

    Characters characters(const QKeyEvent &event) override {
        load();
        if (keymap_ && !agrees(event)) {  // the layout was changed meanwhile
            forget();
            load();
        }
        if (!keymap_) return fallback_.characters(event);
        const xkb_keycode_t key = event.nativeScanCode();
        const xkb_layout_index_t layout = layoutOf(event);
        return {latin(key, layout, Level::plain), latin(key, layout, Level::shifted)};
    }

    void forget() override { keymap_.reset(); }

private:
    // Where X events carry the group.
    static xkb_layout_index_t layoutOf(const QKeyEvent &event) { return (event.nativeModifiers() >> 13) & 3; }

    // Whether the keymap gives for the event what the event says itself.
    bool agrees(const QKeyEvent &event) const {
        const State state(xkb_state_new(keymap_.get()));
        xkb_state_update_mask(state.get(), event.nativeModifiers() & 0xFF, 0, 0, 0, 0, layoutOf(event));
        return xkb_state_key_get_one_sym(state.get(), event.nativeScanCode()) == event.nativeVirtualKey();
    }

    // Some round trips to the server, at the first key press and after a change.
    void load() {
        if (keymap_) return;
        if (!context_) context_.reset(xkb_context_new(XKB_CONTEXT_NO_FLAGS));
        const int device = xkb_x11_get_core_keyboard_device_id(connection_);
        if (!context_ || device < 0) return;
        keymap_.reset(xkb_x11_keymap_new_from_device(context_.get(), connection_, device, XKB_KEYMAP_COMPILE_NO_FLAGS));
    }

    xkb_keymap *common() {
        if (!common_) {
            const xkb_rule_names names{"evdev", "pc105", "us", "", ""};
            common_.reset(xkb_keymap_new_from_names(context_.get(), &names, XKB_KEYMAP_COMPILE_NO_FLAGS));
        }
        return common_.get();
    }

    static std::string character(xkb_keymap *keymap, xkb_keycode_t key, xkb_layout_index_t layout, Level level) {
        const State state(xkb_state_new(keymap));
        const xkb_mod_index_t shift = xkb_keymap_mod_get_index(keymap, XKB_MOD_NAME_SHIFT);
        const xkb_mod_mask_t depressed = level == Level::shifted && shift != XKB_MOD_INVALID ? 1u << shift : 0;
        xkb_state_update_mask(state.get(), depressed, 0, 0, 0, 0, layout);
        char text[16] = {};
        xkb_state_key_get_utf8(state.get(), key, text, sizeof text);
        return static_cast<unsigned char>(text[0]) < 32 ? std::string() : lowerCased(text);
    }

    static bool isForeign(const std::string &character) {
        constexpr char32_t firstBeyondLatin = 0x370;
        return singleCodePoint(character).value_or(0) >= firstBeyondLatin;
    }

    static bool isAscii(const std::string &character) { return character.size() == 1; }

    std::string latin(xkb_keycode_t key, xkb_layout_index_t layout, Level level) {
        const std::string own = character(keymap_.get(), key, layout, level);
        if (!isForeign(character(keymap_.get(), key, layout, Level::plain))) return own;
        for (xkb_layout_index_t other = 0; other < xkb_keymap_num_layouts(keymap_.get()); ++other)
            if (isAscii(character(keymap_.get(), key, other, level))) return character(keymap_.get(), key, other, level);
        const std::string usual = common() ? character(common(), key, 0, level) : std::string();
        return usual.empty() ? own : usual;
    }

    xcb_connection_t *connection_;
    Context context_;
    Keymap keymap_, common_;
    LearningKeyboard fallback_;
};

}  // namespace

std::unique_ptr<Keyboard> makeKeyboard() {
    if (auto *x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>())
        return std::make_unique<XkbKeyboard>(x11->connection());
    return std::make_unique<LearningKeyboard>();
}

}  // namespace kiv
