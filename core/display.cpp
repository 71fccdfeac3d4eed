/// @file
/// Looks for a window system: one chosen by the environment, or an X server that lets us connect. libxcb is loaded
/// when asked for; toolkits that show windows on X bring it along.

#include "display.h"

#include <dlfcn.h>

#include <cstdlib>
#include <memory>

namespace vexa {
namespace {

bool isSet(const char* variable)
{
    const char* const value = std::getenv(variable);
    return value != nullptr && *value != '\0';
}

bool connectsToX()
{
    using Connect = void* (*)(const char* display, int* screen);
    using HasError = int (*)(void* connection);
    using Disconnect = void (*)(void* connection);

    const std::unique_ptr<void, int (*)(void*)> library(
        dlopen("libxcb.so.1", RTLD_NOW), [](void* opened) { return opened != nullptr ? dlclose(opened) : 0; });
    if (library == nullptr) return false;
    const auto connect = reinterpret_cast<Connect>(dlsym(library.get(), "xcb_connect"));
    const auto hasError = reinterpret_cast<HasError>(dlsym(library.get(), "xcb_connection_has_error"));
    const auto disconnect = reinterpret_cast<Disconnect>(dlsym(library.get(), "xcb_disconnect"));
    if (connect == nullptr || hasError == nullptr || disconnect == nullptr) return false;
    void* const connection = connect(nullptr, nullptr);
    const bool connected = hasError(connection) == 0;
    disconnect(connection);
    return connected;
}

}  // namespace

bool hasDisplay()
{
    return isSet("QT_QPA_PLATFORM") || isSet("WAYLAND_DISPLAY") || (isSet("DISPLAY") && connectsToX());
}

}  // namespace vexa
