#pragma once

#include <glib-object.h>

#include <utility>

namespace ovel {

// Owns one reference to a GObject (or a type with its own ref/unref pair, through the Traits).
template <typename T> class GObjectRef {
public:
    GObjectRef() = default;
    // Takes over a reference the caller already owns (the return of a `_new` function).
    static GObjectRef adopt(T* object) { return GObjectRef(object); }
    // Adds a reference of its own; a floating reference is sunk.
    static GObjectRef retain(T* object) {
        if (object != nullptr) {
            g_object_ref_sink(object);
        }
        return GObjectRef(object);
    }

    GObjectRef(const GObjectRef& other) : object_(other.object_) {
        if (object_ != nullptr) {
            g_object_ref(object_);
        }
    }
    GObjectRef(GObjectRef&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    GObjectRef& operator=(GObjectRef other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }
    ~GObjectRef() { reset(); }

    void reset() {
        if (auto* object = std::exchange(object_, nullptr)) {
            g_object_unref(object);
        }
    }

    T* get() const { return object_; }
    explicit operator bool() const { return object_ != nullptr; }

private:
    explicit GObjectRef(T* object) : object_(object) {}

    T* object_ = nullptr;
};

} // namespace ovel
