// The portal's OpenFile and SaveFile over libdbus. The call returns at once
// with a request object; the answer comes later as that object's Response
// signal. The signal can arrive before the call's reply, so the connection
// subscribes to the request path it predicts before calling, and every
// message already queued is looked at before the next blocking read.
//
// The dialog is modal: this waits, with no time limit, for the answer, for the
// portal to leave the bus, or for the bus to go away. The user can always
// cancel in the portal's own window.
#include "host/sdl2/Portal_FileChooser.h"

#include <dbus/dbus.h>

#include <cstdio>
#include <cstring>
#include <memory>

namespace {

constexpr const char* kPortalName = "org.freedesktop.portal.Desktop";
constexpr const char* kPortalPath = "/org/freedesktop/portal/desktop";
constexpr const char* kFileChooser = "org.freedesktop.portal.FileChooser";
constexpr const char* kRequest = "org.freedesktop.portal.Request";
// Each dialog has a connection of its own, hence a fresh unique name, so one
// token never names two requests.
constexpr const char* kHandleToken = "pellucida";

struct ConnectionClose {
    void operator()(DBusConnection* c) const {
        dbus_connection_close(c);
        dbus_connection_unref(c);
    }
};
using Connection = std::unique_ptr<DBusConnection, ConnectionClose>;

struct MessageUnref {
    void operator()(DBusMessage* m) const { dbus_message_unref(m); }
};
using Message = std::unique_ptr<DBusMessage, MessageUnref>;

struct Error {
    DBusError e;
    Error() { dbus_error_init(&e); }
    ~Error() { dbus_error_free(&e); }
    Error(const Error&) = delete;
    Error& operator=(const Error&) = delete;
};

// [SECTION] The call's options, an a{sv} dictionary

class Options {
public:
    explicit Options(DBusMessageIter* args) : m_args(args) {
        dbus_message_iter_open_container(m_args, DBUS_TYPE_ARRAY, "{sv}", &m_dict);
    }
    ~Options() { dbus_message_iter_close_container(m_args, &m_dict); }
    Options(const Options&) = delete;
    Options& operator=(const Options&) = delete;

    void String(const char* key, const std::string& value) {
        Entry(key, "s", [&](DBusMessageIter* v) { AppendString(v, value.c_str()); });
    }
    void Bool(const char* key, bool value) {
        dbus_bool_t b = value;
        Entry(key, "b",
              [&](DBusMessageIter* v) { dbus_message_iter_append_basic(v, DBUS_TYPE_BOOLEAN, &b); });
    }
    // Paths travel as zero-terminated bytes, not as text.
    void Bytes(const char* key, const std::string& value) {
        Entry(key, "ay", [&](DBusMessageIter* v) {
            DBusMessageIter bytes;
            dbus_message_iter_open_container(v, DBUS_TYPE_ARRAY, "y", &bytes);
            const char* data = value.c_str();
            dbus_message_iter_append_fixed_array(&bytes, DBUS_TYPE_BYTE, &data, int(value.size() + 1));
            dbus_message_iter_close_container(v, &bytes);
        });
    }
    void Filters(const char* key, std::span<const DesktopDialogFilter> filters) {
        Entry(key, "a(sa(us))", [&](DBusMessageIter* v) {
            DBusMessageIter list;
            dbus_message_iter_open_container(v, DBUS_TYPE_ARRAY, "(sa(us))", &list);
            for (const DesktopDialogFilter& f : filters) AppendFilter(&list, f);
            dbus_message_iter_close_container(v, &list);
        });
    }
    void Filter(const char* key, const DesktopDialogFilter& filter) {
        Entry(key, "(sa(us))", [&](DBusMessageIter* v) { AppendFilter(v, filter); });
    }

private:
    template <class Write>
    void Entry(const char* key, const char* signature, Write write) {
        DBusMessageIter entry, variant;
        dbus_message_iter_open_container(&m_dict, DBUS_TYPE_DICT_ENTRY, nullptr, &entry);
        AppendString(&entry, key);
        dbus_message_iter_open_container(&entry, DBUS_TYPE_VARIANT, signature, &variant);
        write(&variant);
        dbus_message_iter_close_container(&entry, &variant);
        dbus_message_iter_close_container(&m_dict, &entry);
    }
    static void AppendString(DBusMessageIter* it, const char* text) {
        dbus_message_iter_append_basic(it, DBUS_TYPE_STRING, &text);
    }
    // (name, [(0 = glob, pattern), ...])
    static void AppendFilter(DBusMessageIter* it, const DesktopDialogFilter& filter) {
        DBusMessageIter row, patterns;
        dbus_message_iter_open_container(it, DBUS_TYPE_STRUCT, nullptr, &row);
        AppendString(&row, filter.name);
        dbus_message_iter_open_container(&row, DBUS_TYPE_ARRAY, "(us)", &patterns);
        for (const char* extension : filter.extensions) {
            DBusMessageIter pair;
            const dbus_uint32_t kGlob = 0;
            const std::string pattern = DesktopDialog_Pattern(extension);
            dbus_message_iter_open_container(&patterns, DBUS_TYPE_STRUCT, nullptr, &pair);
            dbus_message_iter_append_basic(&pair, DBUS_TYPE_UINT32, &kGlob);
            AppendString(&pair, pattern.c_str());
            dbus_message_iter_close_container(&patterns, &pair);
        }
        dbus_message_iter_close_container(&row, &patterns);
        dbus_message_iter_close_container(it, &row);
    }

    DBusMessageIter* m_args;
    DBusMessageIter m_dict;
};

Message MakeCall(const DesktopDialogRequest& request) {
    Message call(dbus_message_new_method_call(kPortalName, kPortalPath, kFileChooser,
                                              request.save ? "SaveFile" : "OpenFile"));
    if (!call) return nullptr;
    // The portal places its window over ours; "" when there is none to name.
    char parent[32] = "";
    if (request.x11Window)
        std::snprintf(parent, sizeof parent, "x11:%llx", static_cast<unsigned long long>(request.x11Window));
    const char* parentText = parent;
    const char* title = request.title.c_str();
    DBusMessageIter args;
    dbus_message_iter_init_append(call.get(), &args);
    dbus_message_iter_append_basic(&args, DBUS_TYPE_STRING, &parentText);
    dbus_message_iter_append_basic(&args, DBUS_TYPE_STRING, &title);

    std::string folder, base;
    DesktopDialog_SplitName(request.proposed, &folder, &base);
    {
        Options options(&args);  // the dictionary is closed at the end of this block
        options.String("handle_token", kHandleToken);
        options.Bool("modal", true);
        const std::span<const DesktopDialogFilter> filters = DesktopDialog_Filters(request.save);
        options.Filters("filters", filters);
        if (request.save) {
            if (const int current = DesktopDialog_SaveFilterFor(base); current >= 0)
                options.Filter("current_filter", filters[size_t(current)]);
            if (!base.empty()) options.String("current_name", base);
        }
        if (!folder.empty()) options.Bytes("current_folder", folder);
    }
    return call;
}

bool Subscribe(DBusConnection* connection, const std::string& rule) {
    Error error;
    dbus_bus_add_match(connection, rule.c_str(), &error.e);
    return !dbus_error_is_set(&error.e);
}

std::string ResponseRule(const std::string& path) {
    return std::string("type='signal',interface='") + kRequest + "',member='Response',path='" + path + "'";
}

// Response(u code, a{sv} results): 0 with "uris" is a choice; 1 (cancelled)
// and 2 (ended otherwise) are not.
DesktopDialogResult ReadResponse(DBusMessage* response, std::string* chosen) {
    DBusMessageIter it;
    if (!dbus_message_iter_init(response, &it) || dbus_message_iter_get_arg_type(&it) != DBUS_TYPE_UINT32)
        return DesktopDialogResult::kCanceled;
    dbus_uint32_t code = 0;
    dbus_message_iter_get_basic(&it, &code);
    if (code != 0 || !dbus_message_iter_next(&it) || dbus_message_iter_get_arg_type(&it) != DBUS_TYPE_ARRAY)
        return DesktopDialogResult::kCanceled;
    DBusMessageIter dict;
    for (dbus_message_iter_recurse(&it, &dict); dbus_message_iter_get_arg_type(&dict) == DBUS_TYPE_DICT_ENTRY;
         dbus_message_iter_next(&dict)) {
        DBusMessageIter entry, value, uris;
        const char* key = nullptr;
        dbus_message_iter_recurse(&dict, &entry);
        dbus_message_iter_get_basic(&entry, &key);
        if (std::strcmp(key, "uris") != 0 || !dbus_message_iter_next(&entry)) continue;
        dbus_message_iter_recurse(&entry, &value);
        if (dbus_message_iter_get_arg_type(&value) != DBUS_TYPE_ARRAY ||
            dbus_message_iter_get_element_type(&value) != DBUS_TYPE_STRING)
            continue;
        dbus_message_iter_recurse(&value, &uris);
        if (dbus_message_iter_get_arg_type(&uris) != DBUS_TYPE_STRING) continue;
        const char* uri = nullptr;
        dbus_message_iter_get_basic(&uris, &uri);
        if (std::optional<std::string> path = Portal_PathFromUri(uri)) {
            *chosen = *path;
            return DesktopDialogResult::kChosen;
        }
    }
    return DesktopDialogResult::kCanceled;
}

bool PortalLeft(DBusMessage* message) {
    const char *name = nullptr, *before = nullptr, *after = nullptr;
    return dbus_message_get_args(message, nullptr, DBUS_TYPE_STRING, &name, DBUS_TYPE_STRING, &before,
                                 DBUS_TYPE_STRING, &after, DBUS_TYPE_INVALID) &&
           std::strcmp(name, kPortalName) == 0 && *after == 0;
}

DesktopDialogResult AwaitResponse(DBusConnection* connection, const std::string& predicted,
                                  const std::string& handle, std::string* chosen) {
    for (;;) {
        while (Message message{dbus_connection_pop_message(connection)}) {
            DBusMessage* m = message.get();
            if (dbus_message_is_signal(m, DBUS_INTERFACE_LOCAL, "Disconnected"))
                return DesktopDialogResult::kCanceled;
            if (dbus_message_is_signal(m, DBUS_INTERFACE_DBUS, "NameOwnerChanged") && PortalLeft(m))
                return DesktopDialogResult::kCanceled;
            if (dbus_message_is_signal(m, kRequest, "Response") &&
                (dbus_message_has_path(m, predicted.c_str()) || dbus_message_has_path(m, handle.c_str())))
                return ReadResponse(m, chosen);
        }
        if (!dbus_connection_read_write(connection, -1) || !dbus_connection_get_is_connected(connection))
            return DesktopDialogResult::kCanceled;
    }
}

}  // namespace

DesktopDialogResult Portal_FileDialog(const DesktopDialogRequest& request, std::string* chosen) {
    Error error;
    Connection connection(dbus_bus_get_private(DBUS_BUS_SESSION, &error.e));
    if (!connection) return DesktopDialogResult::kUnavailable;
    dbus_connection_set_exit_on_disconnect(connection.get(), false);

    const std::string predicted =
        Portal_RequestPath(dbus_bus_get_unique_name(connection.get()), kHandleToken);
    if (!Subscribe(connection.get(), ResponseRule(predicted)) ||
        !Subscribe(connection.get(), std::string("type='signal',sender='") + DBUS_SERVICE_DBUS +
                                         "',interface='" + DBUS_INTERFACE_DBUS +
                                         "',member='NameOwnerChanged',arg0='" + kPortalName + "'"))
        return DesktopDialogResult::kUnavailable;

    Message call = MakeCall(request);
    if (!call) return DesktopDialogResult::kUnavailable;
    // An error here (no such name, no file chooser behind it) means no portal:
    // the caller tries the next way.
    Message reply(dbus_connection_send_with_reply_and_block(connection.get(), call.get(),
                                                            DBUS_TIMEOUT_USE_DEFAULT, &error.e));
    const char* handle = nullptr;
    if (!reply ||
        !dbus_message_get_args(reply.get(), nullptr, DBUS_TYPE_OBJECT_PATH, &handle, DBUS_TYPE_INVALID))
        return DesktopDialogResult::kUnavailable;
    // Portals before 0.9 chose the path themselves.
    if (predicted != handle && !Subscribe(connection.get(), ResponseRule(handle)))
        return DesktopDialogResult::kCanceled;
    return AwaitResponse(connection.get(), predicted, handle, chosen);
}
