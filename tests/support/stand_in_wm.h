#pragma once

#include <QMap>
#include <QString>

#include <xcb/xcb.h>

#include <cstdlib>
#include <vector>

// What a window manager would see and do, on a display that has none: it counts the requests to move a window, and
// minimises, restores and closes windows as the real ones do. Made before the application, which looks for it once.
class StandInWm {
public:
    StandInWm()
    {
        connection = xcb_connect(nullptr, nullptr);
        const xcb_screen_t *screen = xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
        root = screen->root;
        const uint32_t events = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
        xcb_change_window_attributes(connection, root, XCB_CW_EVENT_MASK, &events);
        const xcb_window_t self = xcb_generate_id(connection);
        xcb_create_window(connection, XCB_COPY_FROM_PARENT, self, root, 0, 0, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                          XCB_COPY_FROM_PARENT, 0, nullptr);
        for (xcb_window_t window : { root, self })
            set(window, "_NET_SUPPORTING_WM_CHECK", XCB_ATOM_WINDOW, { self });
        set(root, "_NET_SUPPORTED", XCB_ATOM_ATOM,
            { atom("_NET_SUPPORTING_WM_CHECK"), atom("_NET_WM_MOVERESIZE"), atom("_NET_WM_STATE") });
        xcb_flush(connection);
    }
    ~StandInWm() { xcb_disconnect(connection); }
    StandInWm(const StandInWm &) = delete;
    StandInWm &operator=(const StandInWm &) = delete;

    // Since the last call, after what the application has sent so far.
    int moveRequests() { return take("_NET_WM_MOVERESIZE"); }
    int minimiseRequests() { return take("WM_CHANGE_STATE"); }

    void minimise(xcb_window_t window)
    {
        setState(window, 3);
        xcb_unmap_window(connection, window);
        xcb_flush(connection);
    }
    void restore(xcb_window_t window)
    {
        setState(window, 1);
        xcb_map_window(connection, window);
        xcb_flush(connection);
    }
    // As Alt+F4 is told to the program.
    void askToClose(xcb_window_t window)
    {
        xcb_client_message_event_t event = {};
        event.response_type = XCB_CLIENT_MESSAGE;
        event.format = 32;
        event.window = window;
        event.type = atom("WM_PROTOCOLS");
        event.data.data32[0] = atom("WM_DELETE_WINDOW");
        xcb_send_event(connection, 0, window, 0, reinterpret_cast<const char *>(&event));
        xcb_flush(connection);
    }

private:
    xcb_atom_t atom(const QByteArray &name)
    {
        xcb_intern_atom_reply_t *reply = xcb_intern_atom_reply(
            connection, xcb_intern_atom(connection, 0, uint16_t(name.size()), name.constData()), nullptr);
        const xcb_atom_t result = reply->atom;
        std::free(reply);
        return result;
    }

    void set(xcb_window_t window, const QByteArray &property, xcb_atom_t type, const std::vector<uint32_t> &values)
    {
        xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window, atom(property), type, 32,
                            uint32_t(values.size()), values.data());
    }

    // 1 normal, 3 minimised, after the Inter-Client Communication Conventions.
    void setState(xcb_window_t window, uint32_t state) { set(window, "WM_STATE", atom("WM_STATE"), { state, 0 }); }

    int take(const QByteArray &type)
    {
        // A round trip: what was sent before it has arrived.
        std::free(xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
        while (xcb_generic_event_t *event = xcb_poll_for_event(connection)) {
            if ((event->response_type & 0x7f) == XCB_CLIENT_MESSAGE)
                ++seen[reinterpret_cast<xcb_client_message_event_t *>(event)->type];
            std::free(event);
        }
        return seen.take(atom(type));
    }

    xcb_connection_t *connection;
    xcb_window_t root;
    QMap<xcb_atom_t, int> seen;
};
