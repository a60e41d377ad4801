// Reading back what a window shows on the X screen, for tests that check what
// was painted. The pixels come straight from the X server (XGetImage on a
// connection of our own, after the toolkit's connection has been synced), so
// they are what the user would see, never a cached copy. libX11 and GDK are
// already loaded by the toolkit; their functions are looked up at run time.
#pragma once

#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <dlfcn.h>

#include <wx/colour.h>
#include <wx/image.h>
#include <wx/window.h>

#include <cstdlib>

namespace vt {

namespace pixels_detail {

struct XApi {
  Display* (*openDisplay)(const char*) = nullptr;
  XImage* (*getImage)(Display*, Drawable, int, int, unsigned, unsigned, unsigned long, int) =
      nullptr;
  void* (*gdkDisplayDefault)() = nullptr;
  void (*gdkDisplaySync)(void*) = nullptr;
  Display* display = nullptr;
  bool ok = false;
};

inline XApi& Api() {
  static XApi api = [] {
    XApi a;
    a.openDisplay = reinterpret_cast<Display* (*)(const char*)>(dlsym(RTLD_DEFAULT, "XOpenDisplay"));
    a.getImage = reinterpret_cast<XImage* (*)(Display*, Drawable, int, int, unsigned, unsigned,
                                              unsigned long, int)>(dlsym(RTLD_DEFAULT, "XGetImage"));
    a.gdkDisplayDefault =
        reinterpret_cast<void* (*)()>(dlsym(RTLD_DEFAULT, "gdk_display_get_default"));
    a.gdkDisplaySync = reinterpret_cast<void (*)(void*)>(dlsym(RTLD_DEFAULT, "gdk_display_sync"));
    if (a.openDisplay && a.getImage) a.display = a.openDisplay(nullptr);
    a.ok = a.display != nullptr;
    return a;
  }();
  return api;
}

inline int Channel(unsigned long pixel, unsigned long mask) {
  if (!mask) return 0;
  int shift = 0;
  while (!((mask >> shift) & 1)) ++shift;
  const unsigned long max = mask >> shift;
  return static_cast<int>(((pixel & mask) >> shift) * 255 / max);
}

}  // namespace pixels_detail

// The window's client area as it is on the screen now; an invalid image when
// the screen cannot be read.
inline wxImage GrabClient(wxWindow* win) {
  pixels_detail::XApi& api = pixels_detail::Api();
  if (!api.ok) return wxImage();
  if (api.gdkDisplayDefault && api.gdkDisplaySync) {
    if (void* gdk = api.gdkDisplayDefault()) api.gdkDisplaySync(gdk);
  }
  const wxSize size = win->GetClientSize();
  const wxPoint origin = win->ClientToScreen(wxPoint(0, 0));
  if (size.x <= 0 || size.y <= 0) return wxImage();
  XImage* xi = api.getImage(api.display, DefaultRootWindow(api.display), origin.x, origin.y,
                            static_cast<unsigned>(size.x), static_cast<unsigned>(size.y),
                            ~0UL, ZPixmap);
  if (!xi) return wxImage();
  wxImage img(size.x, size.y);
  for (int y = 0; y < size.y; ++y)
    for (int x = 0; x < size.x; ++x) {
      const unsigned long p = XGetPixel(xi, x, y);
      img.SetRGB(x, y, pixels_detail::Channel(p, xi->red_mask),
                 pixels_detail::Channel(p, xi->green_mask),
                 pixels_detail::Channel(p, xi->blue_mask));
    }
  XDestroyImage(xi);
  return img;
}

inline wxColour PixelAt(const wxImage& img, int x, int y) {
  if (!img.IsOk() || x < 0 || y < 0 || x >= img.GetWidth() || y >= img.GetHeight())
    return wxColour(1, 2, 3);
  return wxColour(img.GetRed(x, y), img.GetGreen(x, y), img.GetBlue(x, y));
}

inline bool Near(const wxColour& a, const wxColour& b, int tol = 8) {
  return std::abs(a.Red() - b.Red()) <= tol && std::abs(a.Green() - b.Green()) <= tol &&
         std::abs(a.Blue() - b.Blue()) <= tol;
}

}  // namespace vt
