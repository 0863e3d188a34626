// An editor with two main windows, a palette and a dialog, and with a browser that it has started, on a display without
// a window manager, whose part it plays. With a file as its argument it writes down there, a line each, which windows
// are to close, and lets none. Without a display or a file it shows no window. It waits until it is ended.
#include <unistd.h>
#include <xcb/xcb.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <vector>

namespace {

xcb_connection_t* display;
xcb_window_t root;

xcb_atom_t atom(const char* name) {
  auto* const reply = xcb_intern_atom_reply(
      display, xcb_intern_atom(display, 0, static_cast<std::uint16_t>(std::strlen(name)), name), nullptr);
  const xcb_atom_t number = reply->atom;
  std::free(reply);
  return number;
}

void set(xcb_window_t window, const char* property, xcb_atom_t type, const std::vector<std::uint32_t>& values) {
  xcb_change_property(display, XCB_PROP_MODE_REPLACE, window, atom(property), type, 32,
                      static_cast<std::uint32_t>(values.size()), values.data());
}

xcb_window_t window() {
  const xcb_window_t number = xcb_generate_id(display);
  xcb_create_window(display, XCB_COPY_FROM_PARENT, number, root, 0, 0, 9, 9, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                    XCB_COPY_FROM_PARENT, 0, nullptr);
  return number;
}

void openDisplay() {
  display = xcb_connect(nullptr, nullptr);
  root = xcb_setup_roots_iterator(xcb_get_setup(display)).data->root;
}

// Another process with a window, whose number it answers. It ends with the display.
xcb_window_t browser() {
  int ends[2];
  xcb_window_t number = XCB_WINDOW_NONE;
  if (pipe(ends) != 0) return number;
  if (fork() != 0) {
    (void)!read(ends[0], &number, sizeof number);
    return number;
  }
  openDisplay();
  number = window();
  std::free(xcb_get_input_focus_reply(display, xcb_get_input_focus(display), nullptr));  // the server has it now
  (void)!write(ends[1], &number, sizeof number);
  while (auto* const event = xcb_wait_for_event(display)) std::free(event);
  _exit(0);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) pause();
  const xcb_window_t other = browser();
  openDisplay();
  const std::uint32_t mask = XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT;
  xcb_change_window_attributes(display, root, XCB_CW_EVENT_MASK, &mask);
  const std::vector<xcb_window_t> all = {window(), window(), window(), window(), other};
  set(all[1], "_NET_WM_WINDOW_TYPE", XCB_ATOM_ATOM, {atom("_NET_WM_WINDOW_TYPE_NORMAL")});
  set(all[2], "_NET_WM_WINDOW_TYPE", XCB_ATOM_ATOM, {atom("_NET_WM_WINDOW_TYPE_UTILITY")});
  set(all[3], "WM_TRANSIENT_FOR", XCB_ATOM_WINDOW, {all[0]});
  set(root, "_NET_CLIENT_LIST", XCB_ATOM_WINDOW, all);
  const xcb_atom_t close = atom("_NET_CLOSE_WINDOW");
  std::ofstream asked(argv[1]);
  const char* const names[] = {"main 1", "main 2", "palette", "dialog", "browser"};
  while (auto* const event = xcb_wait_for_event(display)) {
    const auto* const message = reinterpret_cast<xcb_client_message_event_t*>(event);
    if ((event->response_type & 0x7f) == XCB_CLIENT_MESSAGE && message->type == close)
      for (std::size_t i = 0; i < all.size(); ++i)
        if (all[i] == message->window) asked << names[i] << std::endl;
    std::free(event);
  }
}
