// A stand-in for the desktop portal's file chooser on a private session bus.
// It takes the portal's name, prints "ready", answers one OpenFile or SaveFile
// call and ends when the caller leaves the bus. The call's arguments go to
// <record>, one "key value" line each, values printed as D-Bus data. The answer:
//   <code> [uri]  the Response signal with that code (and "uris" when given),
//                 sent before the call's reply, as a fast portal may;
//   vanish        the reply only, then leaving the bus without an answer.
// Usage: fake_portal <record> <code> [uri] | fake_portal <record> vanish
#include <dbus/dbus.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <string>

namespace {

// D-Bus data as text: "s", true, 7, b"bytes\0", [array], (struct).
std::string Print(DBusMessageIter* it) {
    const int type = dbus_message_iter_get_arg_type(it);
    if (dbus_type_is_basic(type)) {
        DBusBasicValue v;
        dbus_message_iter_get_basic(it, &v);
        if (type == DBUS_TYPE_STRING || type == DBUS_TYPE_OBJECT_PATH)
            return std::string("\"").append(v.str) + "\"";
        if (type == DBUS_TYPE_BOOLEAN) return v.bool_val ? "true" : "false";
        return std::to_string(v.u32);
    }
    DBusMessageIter inner;
    dbus_message_iter_recurse(it, &inner);
    if (type == DBUS_TYPE_VARIANT) return Print(&inner);
    const bool array = type == DBUS_TYPE_ARRAY;
    if (array && dbus_message_iter_get_element_type(it) == DBUS_TYPE_BYTE) {
        const char* data;
        int n = 0;
        dbus_message_iter_get_fixed_array(&inner, &data, &n);
        std::string text = "b\"";
        for (int i = 0; i < n; ++i) text += data[i] ? std::string(1, data[i]) : std::string("\\0");
        return text + "\"";
    }
    std::string text = array ? "[" : "(";
    for (bool first = true; dbus_message_iter_get_arg_type(&inner) != DBUS_TYPE_INVALID;
         dbus_message_iter_next(&inner), first = false)
        text += (first ? "" : ", ") + Print(&inner);
    return text + (array ? "]" : ")");
}

// Records the call and returns its handle_token.
std::string Record(DBusMessage* call, const char* path) {
    std::ofstream out(path);
    out << "method " << dbus_message_get_member(call) << "\n";
    DBusMessageIter args, dict;
    dbus_message_iter_init(call, &args);
    out << "parent " << Print(&args) << "\n";
    dbus_message_iter_next(&args);
    out << "title " << Print(&args) << "\n";
    dbus_message_iter_next(&args);
    std::string token;
    for (dbus_message_iter_recurse(&args, &dict);
         dbus_message_iter_get_arg_type(&dict) == DBUS_TYPE_DICT_ENTRY; dbus_message_iter_next(&dict)) {
        DBusMessageIter entry;
        const char* key;
        dbus_message_iter_recurse(&dict, &entry);
        dbus_message_iter_get_basic(&entry, &key);
        dbus_message_iter_next(&entry);
        const std::string value = Print(&entry);
        out << key << " " << value << "\n";
        if (std::strcmp(key, "handle_token") == 0) token = value.substr(1, value.size() - 2);
    }
    return token;
}

void SendResponse(DBusConnection* bus, const std::string& handle, dbus_uint32_t code, const char* uri) {
    DBusMessage* signal =
        dbus_message_new_signal(handle.c_str(), "org.freedesktop.portal.Request", "Response");
    DBusMessageIter args, dict, entry, variant, uris;
    dbus_message_iter_init_append(signal, &args);
    dbus_message_iter_append_basic(&args, DBUS_TYPE_UINT32, &code);
    dbus_message_iter_open_container(&args, DBUS_TYPE_ARRAY, "{sv}", &dict);
    if (uri) {
        const char* key = "uris";
        dbus_message_iter_open_container(&dict, DBUS_TYPE_DICT_ENTRY, nullptr, &entry);
        dbus_message_iter_append_basic(&entry, DBUS_TYPE_STRING, &key);
        dbus_message_iter_open_container(&entry, DBUS_TYPE_VARIANT, "as", &variant);
        dbus_message_iter_open_container(&variant, DBUS_TYPE_ARRAY, "s", &uris);
        dbus_message_iter_append_basic(&uris, DBUS_TYPE_STRING, &uri);
        dbus_message_iter_close_container(&variant, &uris);
        dbus_message_iter_close_container(&entry, &variant);
        dbus_message_iter_close_container(&dict, &entry);
    }
    dbus_message_iter_close_container(&args, &dict);
    dbus_connection_send(bus, signal, nullptr);
    dbus_message_unref(signal);
}

// Subscribes to the caller's leaving the bus; done before answering, since the
// caller may leave as soon as it has the answer.
void WatchCaller(DBusConnection* bus, const std::string& caller) {
    const std::string rule =
        "type='signal',interface='org.freedesktop.DBus',member='NameOwnerChanged',arg0='" + caller + "'";
    dbus_bus_add_match(bus, rule.c_str(), nullptr);
}

// Stays on the bus until the caller leaves it: a caller that missed the
// answer waits for ever instead of being freed by the portal's going.
bool AwaitLeaving(DBusConnection* bus, const std::string& caller) {
    for (;;) {
        while (DBusMessage* m = dbus_connection_pop_message(bus)) {
            const char *name = nullptr, *before = nullptr, *after = nullptr;
            const bool left = dbus_message_is_signal(m, "org.freedesktop.DBus", "NameOwnerChanged") &&
                              dbus_message_get_args(m, nullptr, DBUS_TYPE_STRING, &name, DBUS_TYPE_STRING,
                                                    &before, DBUS_TYPE_STRING, &after, DBUS_TYPE_INVALID) &&
                              caller == name && *after == 0;
            dbus_message_unref(m);
            if (left) return true;
        }
        if (!dbus_connection_read_write(bus, -1)) return false;
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3) return 2;
    DBusError error;
    dbus_error_init(&error);
    DBusConnection* bus = dbus_bus_get(DBUS_BUS_SESSION, &error);
    if (!bus || dbus_bus_request_name(bus, "org.freedesktop.portal.Desktop", DBUS_NAME_FLAG_DO_NOT_QUEUE,
                                      &error) != DBUS_REQUEST_NAME_REPLY_PRIMARY_OWNER)
        return 3;
    std::printf("ready\n");
    std::fflush(stdout);

    while (dbus_connection_read_write(bus, -1)) {
        while (DBusMessage* call = dbus_connection_pop_message(bus)) {
            if (!dbus_message_is_method_call(call, "org.freedesktop.portal.FileChooser", "OpenFile") &&
                !dbus_message_is_method_call(call, "org.freedesktop.portal.FileChooser", "SaveFile")) {
                dbus_message_unref(call);
                continue;
            }
            const std::string caller = dbus_message_get_sender(call);
            std::string sender = caller.substr(1);  // ":1.5" -> "1_5"
            for (char& c : sender) c = c == '.' ? '_' : c;
            const std::string handle =
                "/org/freedesktop/portal/desktop/request/" + sender + "/" + Record(call, argv[1]);
            WatchCaller(bus, caller);
            if (std::strcmp(argv[2], "vanish") != 0)
                SendResponse(bus, handle, dbus_uint32_t(std::stoul(argv[2])), argc > 3 ? argv[3] : nullptr);
            DBusMessage* reply = dbus_message_new_method_return(call);
            const char* path = handle.c_str();
            dbus_message_append_args(reply, DBUS_TYPE_OBJECT_PATH, &path, DBUS_TYPE_INVALID);
            dbus_connection_send(bus, reply, nullptr);
            dbus_connection_flush(bus);
            dbus_message_unref(reply);
            dbus_message_unref(call);
            if (std::strcmp(argv[2], "vanish") == 0) return 0;
            return AwaitLeaving(bus, caller) ? 0 : 4;
        }
    }
    return 4;
}
