#include "platform/host/posix/x11_windows.h"

#if __has_include(<xcb/xcb.h>)

#include <QByteArray>
#include <QLibrary>
#include <QString>

#include <array>
#include <cstdlib>
#include <cstring>
#include <utility>
#include <vector>
#include <xcb/xcb.h>

namespace quoril {

using namespace Qt::StringLiterals;

namespace {

struct FreeDeleter
{
    void operator()(void* memory) const { std::free(memory); }
};
template <typename T> using Reply = std::unique_ptr<T, FreeDeleter>;

/// The X client library, loaded when it is asked for: the program has to start where there is none.
struct Xcb
{
    Xcb() : library(u"xcb"_s, 1)
    {
        complete = library.load() && load(connect, "xcb_connect")
            && load(hasError, "xcb_connection_has_error") && load(disconnect, "xcb_disconnect")
            && load(setup, "xcb_get_setup") && load(roots, "xcb_setup_roots_iterator")
            && load(internAtom, "xcb_intern_atom") && load(internAtomReply, "xcb_intern_atom_reply")
            && load(getProperty, "xcb_get_property") && load(getPropertyReply, "xcb_get_property_reply")
            && load(propertyValue, "xcb_get_property_value")
            && load(propertyLength, "xcb_get_property_value_length") && load(queryTree, "xcb_query_tree")
            && load(queryTreeReply, "xcb_query_tree_reply") && load(children, "xcb_query_tree_children")
            && load(childrenLength, "xcb_query_tree_children_length") && load(mapWindow, "xcb_map_window")
            && load(configureWindow, "xcb_configure_window") && load(clearArea, "xcb_clear_area")
            && load(setInputFocus, "xcb_set_input_focus") && load(sendEvent, "xcb_send_event")
            && load(inputFocus, "xcb_get_input_focus") && load(inputFocusReply, "xcb_get_input_focus_reply");
    }

    template <typename Function> bool load(Function*& function, const char* name)
    {
        function = reinterpret_cast<Function*>(library.resolve(name));
        return function != nullptr;
    }

    QLibrary library;
    bool complete = false;
    decltype(xcb_connect)* connect = nullptr;
    decltype(xcb_connection_has_error)* hasError = nullptr;
    decltype(xcb_disconnect)* disconnect = nullptr;
    decltype(xcb_get_setup)* setup = nullptr;
    decltype(xcb_setup_roots_iterator)* roots = nullptr;
    decltype(xcb_intern_atom)* internAtom = nullptr;
    decltype(xcb_intern_atom_reply)* internAtomReply = nullptr;
    decltype(xcb_get_property)* getProperty = nullptr;
    decltype(xcb_get_property_reply)* getPropertyReply = nullptr;
    decltype(xcb_get_property_value)* propertyValue = nullptr;
    decltype(xcb_get_property_value_length)* propertyLength = nullptr;
    decltype(xcb_query_tree)* queryTree = nullptr;
    decltype(xcb_query_tree_reply)* queryTreeReply = nullptr;
    decltype(xcb_query_tree_children)* children = nullptr;
    decltype(xcb_query_tree_children_length)* childrenLength = nullptr;
    decltype(xcb_map_window)* mapWindow = nullptr;
    decltype(xcb_configure_window)* configureWindow = nullptr;
    decltype(xcb_clear_area)* clearArea = nullptr;
    decltype(xcb_set_input_focus)* setInputFocus = nullptr;
    decltype(xcb_send_event)* sendEvent = nullptr;
    decltype(xcb_get_input_focus)* inputFocus = nullptr;
    decltype(xcb_get_input_focus_reply)* inputFocusReply = nullptr;
};

/// A connection to the display and what is asked of it.
class Display
{
public:
    Display()
    {
        if (!m_xcb.complete)
            return;
        m_connection = m_xcb.connect(nullptr, nullptr);
        if (m_xcb.hasError(m_connection) != 0)
            return;
        const xcb_screen_iterator_t screens = m_xcb.roots(m_xcb.setup(m_connection));
        m_root = screens.rem > 0 ? screens.data->root : XCB_NONE;
    }
    ~Display()
    {
        if (m_connection)
            m_xcb.disconnect(m_connection);
    }
    Display(const Display&) = delete;
    Display& operator=(const Display&) = delete;

    xcb_window_t root() const { return m_root; }

    xcb_atom_t atom(const char* name) const
    {
        const auto cookie = m_xcb.internAtom(m_connection, 0, static_cast<uint16_t>(std::strlen(name)), name);
        const Reply<xcb_intern_atom_reply_t> reply(m_xcb.internAtomReply(m_connection, cookie, nullptr));
        return reply ? reply->atom : static_cast<xcb_atom_t>(XCB_NONE);
    }

    QByteArray property(xcb_window_t window, xcb_atom_t name) const
    {
        constexpr uint32_t mostUnits = 65536; // of four bytes
        const auto cookie
            = m_xcb.getProperty(m_connection, 0, window, name, XCB_GET_PROPERTY_TYPE_ANY, 0, mostUnits);
        const Reply<xcb_get_property_reply_t> reply(m_xcb.getPropertyReply(m_connection, cookie, nullptr));
        if (!reply)
            return {};
        return {
            static_cast<const char*>(m_xcb.propertyValue(reply.get())), m_xcb.propertyLength(reply.get())};
    }

    std::vector<xcb_window_t> childrenOf(xcb_window_t window) const
    {
        const auto cookie = m_xcb.queryTree(m_connection, window);
        const Reply<xcb_query_tree_reply_t> reply(m_xcb.queryTreeReply(m_connection, cookie, nullptr));
        if (!reply)
            return {};
        const xcb_window_t* first = m_xcb.children(reply.get());
        return {first, first + m_xcb.childrenLength(reply.get())};
    }

    bool hasTitle(xcb_window_t window, QStringView title) const
    {
        const QByteArray modern = property(window, atom("_NET_WM_NAME"));
        if (!modern.isEmpty())
            return QString::fromUtf8(modern) == title;
        const QByteArray old = property(window, XCB_ATOM_WM_NAME);
        return !old.isEmpty() && QString::fromLatin1(old) == title;
    }

    /// The managed windows where a window manager lists them, else all of the first levels.
    std::vector<xcb_window_t> topLevelWindows() const
    {
        const QByteArray list = property(m_root, atom("_NET_CLIENT_LIST"));
        std::vector<xcb_window_t> windows(static_cast<std::size_t>(list.size()) / sizeof(xcb_window_t));
        if (!windows.empty()) {
            std::memcpy(windows.data(), list.constData(), windows.size() * sizeof(xcb_window_t));
            return windows;
        }
        windows = childrenOf(m_root);
        const std::size_t frames = windows.size();
        for (std::size_t i = 0; i < frames; ++i) {
            const std::vector<xcb_window_t> inner = childrenOf(windows[i]);
            windows.insert(windows.end(), inner.begin(), inner.end());
        }
        return windows;
    }

    bool isIconic(xcb_window_t window) const
    {
        constexpr uint32_t iconicState = 3;
        const QByteArray state = property(window, atom("WM_STATE"));
        uint32_t number = 0;
        if (state.size() < static_cast<qsizetype>(sizeof number))
            return false;
        std::memcpy(&number, state.constData(), sizeof number);
        return number == iconicState;
    }

    void map(xcb_window_t window) const
    {
        m_xcb.mapWindow(m_connection, window);
        settle();
    }

    void bringForward(xcb_window_t window) const
    {
        m_xcb.clearArea(m_connection, 1, window, 0, 0, 0, 0);
        const uint32_t above = XCB_STACK_MODE_ABOVE;
        m_xcb.configureWindow(m_connection, window, XCB_CONFIG_WINDOW_STACK_MODE, &above);
        xcb_client_message_event_t event = {};
        event.response_type = XCB_CLIENT_MESSAGE;
        event.format = 32;
        event.window = window;
        event.type = atom("_NET_ACTIVE_WINDOW");
        event.data.data32[0] = 2; // asked for by the person, as a pager does
        std::array<char, 32> bytes = {};
        std::memcpy(bytes.data(), &event, sizeof event);
        m_xcb.sendEvent(m_connection, 0, m_root,
            XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT, bytes.data());
        m_xcb.setInputFocus(m_connection, XCB_INPUT_FOCUS_PARENT, window, XCB_CURRENT_TIME);
        settle();
    }

private:
    /// Waits until the server has done what was asked; a request that failed is of no consequence.
    void settle() const
    {
        const Reply<xcb_get_input_focus_reply_t> reply(
            m_xcb.inputFocusReply(m_connection, m_xcb.inputFocus(m_connection), nullptr));
    }

    Xcb m_xcb;
    xcb_connection_t* m_connection = nullptr;
    xcb_window_t m_root = XCB_NONE;
};

class X11Window : public ForeignWindow
{
public:
    X11Window(std::unique_ptr<Display> display, xcb_window_t window)
        : m_display(std::move(display))
        , m_window(window)
    {
    }

    bool isIconic() const override { return m_display->isIconic(m_window); }
    void restore() override { m_display->map(m_window); }
    void bringForward() override { m_display->bringForward(m_window); }

private:
    std::unique_ptr<Display> m_display;
    xcb_window_t m_window;
};

} // namespace

std::unique_ptr<ForeignWindow> findX11Window(QStringView title)
{
    if (qEnvironmentVariableIsEmpty("DISPLAY"))
        return nullptr;
    auto display = std::make_unique<Display>();
    if (display->root() == XCB_NONE)
        return nullptr;
    for (const xcb_window_t window : display->topLevelWindows()) {
        if (display->hasTitle(window, title))
            return std::make_unique<X11Window>(std::move(display), window);
    }
    return nullptr;
}

} // namespace quoril

#else

namespace quoril {

std::unique_ptr<ForeignWindow> findX11Window(QStringView)
{
    return nullptr;
}

} // namespace quoril

#endif
