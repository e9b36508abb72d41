// Starts a program on the X display of the environment and tells, as one line of JSON, when its window first
// showed a picture and when the picture was complete, in milliseconds after the process was started; how much
// memory the process holds then; and how much processor time it takes in two idle seconds.
//
//   first_picture PROGRAM [ARGUMENT...]
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;

double Milliseconds(Clock::duration duration) {
  return std::chrono::duration<double, std::milli>(duration).count();
}

struct Picture {
  std::size_t hash = 0;
  std::size_t colours = 0;
};

// The colours are counted on every 16th pixel: enough to tell a picture from an empty window.
Picture Look(Display* display, Window window, int width, int height) {
  XImage* image = XGetImage(display, window, 0, 0, static_cast<unsigned>(width),
                            static_cast<unsigned>(height), AllPlanes, ZPixmap);
  if (!image) {
    return {};
  }
  const std::string_view bytes(
      image->data, static_cast<std::size_t>(image->bytes_per_line) * static_cast<std::size_t>(image->height));
  Picture picture{.hash = std::hash<std::string_view>{}(bytes)};
  std::set<unsigned> colours;
  for (std::size_t i = 0; i + 4 <= bytes.size() && colours.size() < 64; i += 64) {
    unsigned pixel = 0;
    std::memcpy(&pixel, bytes.data() + i, sizeof pixel);
    colours.insert(pixel & 0xFFFFFF);
  }
  picture.colours = colours.size();
  XDestroyImage(image);
  return picture;
}

long KibiBytes(pid_t process, const char* field) {
  std::ifstream status("/proc/" + std::to_string(process) + "/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with(field)) {
      return std::strtol(line.c_str() + std::strlen(field) + 1, nullptr, 10);
    }
  }
  return -1;
}

long Ticks(pid_t process) {
  std::ifstream stat("/proc/" + std::to_string(process) + "/stat");
  std::string text((std::istreambuf_iterator<char>(stat)), {});
  const auto end = text.rfind(')');
  if (end == std::string::npos) {
    return -1;
  }
  long user = 0;
  long system = 0;
  std::sscanf(text.c_str() + end + 2, "%*c %*d %*d %*d %*d %*d %*u %*u %*u %*u %*u %ld %ld", &user, &system);
  return user + system;
}

int IgnoreError(Display* /*display*/, XErrorEvent* /*error*/) {
  return 0;
}

}  // namespace

int main(int count, char** arguments) {
  if (count < 2) {
    std::fprintf(stderr, "usage: first_picture PROGRAM [ARGUMENT...]\n");
    return 2;
  }
  Display* display = XOpenDisplay(nullptr);
  if (!display) {
    std::fprintf(stderr, "no X display\n");
    return 1;
  }
  XSetErrorHandler(IgnoreError);
  XSelectInput(display, DefaultRootWindow(display), SubstructureNotifyMask);
  XSync(display, False);

  const auto start = Clock::now();
  pid_t process = 0;
  if (posix_spawn(&process, arguments[1], nullptr, nullptr, arguments + 1, environ) != 0) {
    std::fprintf(stderr, "cannot start %s\n", arguments[1]);
    return 1;
  }

  Window window = 0;
  XWindowAttributes attributes{};
  while (!window && Milliseconds(Clock::now() - start) < 20000) {
    while (XPending(display)) {
      XEvent event;
      XNextEvent(display, &event);
      if (event.type == MapNotify && XGetWindowAttributes(display, event.xmap.window, &attributes) &&
          attributes.width > 200) {
        window = event.xmap.window;
      }
    }
    std::this_thread::sleep_for(std::chrono::microseconds(500));
  }
  if (!window) {
    std::fprintf(stderr, "no window within 20 seconds\n");
    kill(process, SIGKILL);
    return 1;
  }

  double first = -1;
  double complete = -1;
  std::size_t last = 0;
  auto changed = Clock::now();
  while (Milliseconds(Clock::now() - changed) < 700) {
    const Picture picture = Look(display, window, attributes.width, attributes.height);
    const auto now = Clock::now();
    if (first < 0 && picture.colours > 3) {
      first = Milliseconds(now - start);
    }
    if (picture.hash != last) {
      last = picture.hash;
      changed = now;
      complete = Milliseconds(now - start);
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }

  const long before = Ticks(process);
  std::this_thread::sleep_for(std::chrono::seconds(2));
  const long after = Ticks(process);
  std::printf(
      "{\"first_picture_ms\": %.0f, \"complete_ms\": %.0f, \"rss_kib\": %ld, \"anonymous_kib\": %ld, "
      "\"idle_ticks_in_2_s\": %ld}\n",
      first, complete, KibiBytes(process, "VmRSS:"), KibiBytes(process, "RssAnon:"), after - before);

  kill(process, SIGTERM);
  int status = 0;
  for (int i = 0; i < 50 && waitpid(process, &status, WNOHANG) == 0; ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
  }
  kill(process, SIGKILL);
  return 0;
}
