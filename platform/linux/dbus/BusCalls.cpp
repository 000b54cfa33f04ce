#include "platform/linux/dbus/BusCalls.h"

#include <memory>
#include <utility>

namespace tavo {
namespace {

struct Call {
    GObjectPointer<GCancellable> cancellable;
    BusCalls::Answered answered;
};

void putIn(GVariantBuilder& data, const char* key, const std::string& value) {
    if (!value.empty() && g_utf8_validate(value.c_str(), -1, nullptr) != FALSE) {
        g_variant_builder_add(&data, "{sv}", key, g_variant_new_string(value.c_str()));
    }
}

void finished(GObject* bus, GAsyncResult* result, gpointer data) {
    const std::unique_ptr<Call> call(static_cast<Call*>(data));
    GError* error = nullptr;
    Variant reply(g_dbus_connection_call_finish(G_DBUS_CONNECTION(bus), result, &error));
    if (g_cancellable_is_cancelled(call->cancellable.get()) == FALSE) {
        call->answered(std::move(reply), error);
    }
    g_clear_error(&error);
}

}  // namespace

GVariant* platformData(const std::string& startupId, const std::string& activationToken) {
    GVariantBuilder data;
    g_variant_builder_init(&data, G_VARIANT_TYPE_VARDICT);
    putIn(data, "desktop-startup-id", startupId);
    putIn(data, "activation-token", activationToken);
    return g_variant_builder_end(&data);
}

void callBus(GDBusConnection* bus, const char* method, GVariant* parameters) {
    g_dbus_connection_call(bus, kBusName, kBusPath, kBusName, method, parameters, nullptr,
                           G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr, nullptr);
}

BusCalls::BusCalls() : cancellable_(g_cancellable_new()) {}

void BusCalls::call(GDBusConnection* bus, const BusMethod& method, GVariant* parameters,
                    const char* replyType, Answered answered, std::chrono::milliseconds patience) {
    send(bus, method, parameters, replyType, std::move(answered), patience,
         G_DBUS_CALL_FLAGS_NO_AUTO_START);
}

void BusCalls::callStarting(GDBusConnection* bus, const BusMethod& method, GVariant* parameters,
                            const char* replyType, Answered answered,
                            std::chrono::milliseconds patience) {
    send(bus, method, parameters, replyType, std::move(answered), patience, G_DBUS_CALL_FLAGS_NONE);
}

void BusCalls::cancel() {
    g_cancellable_cancel(cancellable_.get());
    cancellable_.reset(g_cancellable_new());
}

void BusCalls::send(GDBusConnection* bus, const BusMethod& method, GVariant* parameters,
                    const char* replyType, Answered answered, std::chrono::milliseconds patience,
                    GDBusCallFlags flags) {
    auto call = std::make_unique<Call>();
    call->cancellable.reset(G_CANCELLABLE(g_object_ref(cancellable_.get())));
    call->answered = std::move(answered);
    g_dbus_connection_call(bus, method.service, method.path, method.interface, method.name,
                           parameters, replyType != nullptr ? G_VARIANT_TYPE(replyType) : nullptr,
                           flags, static_cast<int>(patience.count()), cancellable_.get(), finished,
                           call.release());
}

}  // namespace tavo
