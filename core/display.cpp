/// @file
/// Looks for a window system: an X server that lets us connect, or none at all where Qt is told to do without. libxcb
/// is loaded when asked for; toolkits that show windows on X bring it along.

#include "display.h"

#include <dlfcn.h>

#include <cstdlib>
#include <memory>
#include <string_view>

namespace vexa {
namespace {

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
    // Qt takes what it is told to take, or ends the process.
    const char* const platform = std::getenv("QT_QPA_PLATFORM");
    const std::string_view named = platform != nullptr ? platform : "";
    const std::string_view chosen = named.substr(0, named.find(':'));
    if (chosen == "offscreen" || chosen == "minimal") return true;
    return (chosen.empty() || chosen == "xcb") && connectsToX();
}

}  // namespace vexa
