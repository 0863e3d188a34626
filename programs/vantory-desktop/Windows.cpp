// Finds an application's windows and asks them to close.
#include "programs/vantory-desktop/Windows.h"

#include <xcb/res.h>
#include <xcb/xcb.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace vantory::desktop {

namespace {

struct Free {
  void operator()(void* memory) const { std::free(memory); }
};
template <class Reply>
using ReplyPointer = std::unique_ptr<Reply, Free>;

constexpr std::uint32_t kMostValues = 4096;
constexpr std::uint32_t kSourceIsPerson = 2;  // the request is the user's own wish

}  // namespace

// Without a root no window can be found.
struct Windows::Display {
  xcb_connection_t* connection;
  xcb_window_t root;

  // The number by which the server knows the name.
  xcb_atom_t atom(std::string_view name) const {
    const ReplyPointer<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(
        connection, xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.data()), nullptr));
    return reply ? reply->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
  }

  // The numbers that a property consists of; none when the window has no such property.
  std::vector<std::uint32_t> values(xcb_window_t window, xcb_atom_t property) const {
    const ReplyPointer<xcb_get_property_reply_t> reply(xcb_get_property_reply(
        connection, xcb_get_property(connection, 0, window, property, XCB_ATOM_ANY, 0, kMostValues), nullptr));
    if (!reply || reply->format != 32) return {};
    std::vector<std::uint32_t> values(reply->value_len);
    if (!values.empty())
      std::memcpy(values.data(), xcb_get_property_value(reply.get()), values.size() * sizeof values[0]);
    return values;
  }

  // Not what the window says of itself: that may be its number in a sandbox, or a lie. 0 when the server cannot tell.
  pid_t process(xcb_window_t window) const {
    const xcb_res_client_id_spec_t question{window, XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID};
    const ReplyPointer<xcb_res_query_client_ids_reply_t> reply(
        xcb_res_query_client_ids_reply(connection, xcb_res_query_client_ids(connection, 1, &question), nullptr));
    if (!reply) return 0;
    const auto first = xcb_res_query_client_ids_ids_iterator(reply.get());
    if (first.rem == 0 || xcb_res_client_id_value_value_length(first.data) == 0) return 0;
    return static_cast<pid_t>(*xcb_res_client_id_value_value(first.data));
  }
};

// The server must be able to tell to which process a window belongs.
Windows::Windows() {
  int number = 0;
  xcb_connection_t* const connection = xcb_connect(nullptr, &number);
  display_ = std::make_unique<Display>(Display{connection, XCB_WINDOW_NONE});
  if (xcb_connection_has_error(connection) != 0) return;
  auto screen = xcb_setup_roots_iterator(xcb_get_setup(connection));
  for (; number > 0 && screen.rem > 1; --number) xcb_screen_next(&screen);
  if (screen.rem > 0 && xcb_get_extension_data(connection, &xcb_res_id)->present != 0)
    display_->root = screen.data->root;
}

Windows::~Windows() {
  xcb_disconnect(display_->connection);
}

// A main window is of the normal type or of none, and belongs to no other.
std::vector<Window> Windows::list() const {
  const Display& display = *display_;
  if (display.root == XCB_WINDOW_NONE) return {};
  const xcb_atom_t typeOf = display.atom("_NET_WM_WINDOW_TYPE");
  const xcb_atom_t normal = display.atom("_NET_WM_WINDOW_TYPE_NORMAL");
  std::vector<Window> windows;
  for (const xcb_window_t window : display.values(display.root, display.atom("_NET_CLIENT_LIST"))) {
    const auto types = display.values(window, typeOf);
    const bool isNormal = types.empty() || std::find(types.begin(), types.end(), normal) != types.end();
    const bool isMain = isNormal && display.values(window, XCB_ATOM_WM_TRANSIENT_FOR).empty();
    if (const pid_t process = display.process(window); process != 0) windows.push_back({window, process, isMain});
  }
  return windows;
}

// By the window manager, as its own button does: the application can still ask about its work.
void Windows::close(const Window& window) {
  xcb_client_message_event_t request{};
  request.response_type = XCB_CLIENT_MESSAGE;
  request.format = 32;
  request.window = window.number;
  request.type = display_->atom("_NET_CLOSE_WINDOW");
  request.data.data32[0] = XCB_CURRENT_TIME;
  request.data.data32[1] = kSourceIsPerson;
  xcb_send_event(display_->connection, 0, display_->root,
                 XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                 reinterpret_cast<const char*>(&request));
  // Answered once the server has the request, which it may drop with a connection that ends.
  const ReplyPointer<xcb_get_input_focus_reply_t> received(
      xcb_get_input_focus_reply(display_->connection, xcb_get_input_focus(display_->connection), nullptr));
}

}  // namespace vantory::desktop
