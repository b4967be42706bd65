// SPDX-License-Identifier: ISC
#include "platform/linux/x11/X11Selections.h"

namespace qlx::platform {

namespace {

constexpr std::uint32_t kMostWords = 1U << 14; // of text taken: 64 KiB

} // namespace

xcb_atom_t X11Selections::atomOf(Selection selection) const {
  return selection == Selection::kClipboard ? m_connection.atoms().clipboard
                                            : static_cast<xcb_atom_t>(XCB_ATOM_PRIMARY);
}

void X11Selections::offer(Selection selection, std::string_view text) {
  m_offered[static_cast<std::size_t>(selection)] = text;
  xcb_set_selection_owner(m_connection.xcb(), m_window, atomOf(selection), XCB_CURRENT_TIME);
  xcb_flush(m_connection.xcb());
}

void X11Selections::request(Selection selection) {
  const X11Atoms& atoms = m_connection.atoms();
  xcb_delete_property(m_connection.xcb(), m_window, atoms.transfer);
  xcb_convert_selection(m_connection.xcb(), m_window, atomOf(selection), atoms.utf8String,
                        atoms.transfer, XCB_CURRENT_TIME);
  xcb_flush(m_connection.xcb());
}

void X11Selections::answer(const xcb_selection_request_event_t& event) {
  xcb_connection_t* xcb = m_connection.xcb();
  const X11Atoms& atoms = m_connection.atoms();
  const Selection selection =
      event.selection == XCB_ATOM_PRIMARY ? Selection::kPrimary : Selection::kClipboard;
  const std::string& text = m_offered[static_cast<std::size_t>(selection)];
  const xcb_atom_t property = event.property == XCB_ATOM_NONE ? event.target : event.property;

  xcb_selection_notify_event_t notice{};
  notice.response_type = XCB_SELECTION_NOTIFY;
  notice.time = event.time;
  notice.requestor = event.requestor;
  notice.selection = event.selection;
  notice.target = event.target;
  notice.property = property;
  if (event.target == atoms.targets) {
    const std::array<xcb_atom_t, 3> targets{atoms.targets, atoms.utf8String, XCB_ATOM_STRING};
    xcb_change_property(xcb, XCB_PROP_MODE_REPLACE, event.requestor, property, XCB_ATOM_ATOM, 32,
                        static_cast<std::uint32_t>(targets.size()), targets.data());
  } else if (event.target == atoms.utf8String || event.target == XCB_ATOM_STRING) {
    xcb_change_property(xcb, XCB_PROP_MODE_REPLACE, event.requestor, property, event.target, 8,
                        static_cast<std::uint32_t>(text.size()), text.data());
  } else {
    notice.property = XCB_ATOM_NONE;
  }
  xcb_send_event(xcb, 0, event.requestor, XCB_EVENT_MASK_NO_EVENT,
                 reinterpret_cast<const char*>(&notice));
  xcb_flush(xcb);
}

std::string X11Selections::received(const xcb_selection_notify_event_t& event) {
  if (event.property == XCB_ATOM_NONE) return {};
  xcb_connection_t* xcb = m_connection.xcb();
  const auto asked =
      xcb_get_property(xcb, 1, m_window, event.property, XCB_ATOM_ANY, 0, kMostWords);
  const Reply<xcb_get_property_reply_t> reply(xcb_get_property_reply(xcb, asked, nullptr));
  const bool isText =
      reply != nullptr && reply->format == 8 &&
      (reply->type == m_connection.atoms().utf8String || reply->type == XCB_ATOM_STRING);
  if (!isText) return {};
  return {static_cast<const char*>(xcb_get_property_value(reply.get())),
          static_cast<std::size_t>(xcb_get_property_value_length(reply.get()))};
}

} // namespace qlx::platform
