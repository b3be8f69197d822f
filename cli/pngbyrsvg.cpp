// By librsvg. It is loaded only when a PNG is wanted: some forty libraries come with it, and every other
// command would take twice as long to start.
#include <dlfcn.h>
#include <librsvg/rsvg.h>

#include <memory>

#include "failure.h"
#include "png.h"

namespace cli {
namespace {

Failure DrawingFailed(const std::string& why) { return Failure("drawing the PNG: " + why); }

class Library {
 public:
  // It stays loaded: glib cannot be unloaded.
  Library() : handle_(::dlopen("librsvg-2.so.2", RTLD_NOW | RTLD_LOCAL)) {
    if (!handle_)
      throw DrawingFailed(std::string(::dlerror()) + " (Debian has it in librsvg2-2; SVG needs nothing)");
  }

  // A function of the library, or of glib and cairo below it.
  template <class Function>
  Function* Find(const char* name) const {
    if (void* found = ::dlsym(handle_, name)) return reinterpret_cast<Function*>(found);
    throw DrawingFailed(::dlerror());
  }

 private:
  void* handle_;
};

// What is called, by its own name.
struct Functions {
  Library library;
#define FIND(name) decltype(&::name) name = library.Find<decltype(::name)>(#name)
  FIND(g_memory_input_stream_new_from_data);
  FIND(g_object_unref);
  FIND(g_error_free);
  FIND(rsvg_handle_new_from_stream_sync);
  FIND(rsvg_handle_render_document);
  FIND(cairo_image_surface_create);
  FIND(cairo_surface_destroy);
  FIND(cairo_surface_write_to_png_stream);
  FIND(cairo_create);
  FIND(cairo_destroy);
  FIND(cairo_status_to_string);
#undef FIND
};

// Something of theirs, and the function that gives it back.
template <class Thing, class Release>
std::unique_ptr<Thing, Release> Owned(Thing* thing, Release release) {
  return {thing, release};
}

cairo_status_t Append(void* png, const unsigned char* bytes, unsigned int count) {
  static_cast<std::string*>(png)->append(reinterpret_cast<const char*>(bytes), count);
  return CAIRO_STATUS_SUCCESS;
}

[[noreturn]] void Fail(const Functions& of, GError* error) {
  const auto owned = Owned(error, of.g_error_free);
  throw DrawingFailed(error ? error->message : "unknown error");
}

}  // namespace

std::string PngOf(const std::string& svg, int width, int height) {
  const Functions of;
  GError* error = nullptr;
  const auto stream =
      Owned(of.g_memory_input_stream_new_from_data(svg.data(), static_cast<gssize>(svg.size()), nullptr),
            of.g_object_unref);
  // Long documents are ours, so nothing is gained by a limit.
  const auto document = Owned(
      of.rsvg_handle_new_from_stream_sync(stream.get(), nullptr, RSVG_HANDLE_FLAG_UNLIMITED, nullptr, &error),
      of.g_object_unref);
  if (!document) Fail(of, error);
  const auto surface =
      Owned(of.cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height), of.cairo_surface_destroy);
  const auto context = Owned(of.cairo_create(surface.get()), of.cairo_destroy);
  const RsvgRectangle all{0, 0, static_cast<double>(width), static_cast<double>(height)};
  if (!of.rsvg_handle_render_document(document.get(), context.get(), &all, &error)) Fail(of, error);
  std::string png;
  const cairo_status_t status = of.cairo_surface_write_to_png_stream(surface.get(), Append, &png);
  if (status != CAIRO_STATUS_SUCCESS) throw DrawingFailed(of.cairo_status_to_string(status));
  return png;
}

}  // namespace cli
