#include "host/gl/EglContext.h"

#include <EGL/egl.h>
#include <EGL/eglext.h>

#include <array>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

// ANGLE declares these constants in a header of its own, which other implementations do not install.
constexpr EGLenum kPlatformAngle = 0x3202;
constexpr EGLAttrib kAngleType = 0x3203;
constexpr EGLAttrib kAngleTypeVulkan = 0x3450;
constexpr EGLAttrib kAngleDeviceType = 0x3209;
constexpr EGLAttrib kAngleDeviceTypeSwiftShader = 0x3487;

struct ErrorName {
    EGLint error;
    char const* text;
};

constexpr std::array<ErrorName, 11> kErrorNames{{{EGL_SUCCESS, "no EGL error"},
                                                 {EGL_NOT_INITIALIZED, "EGL_NOT_INITIALIZED"},
                                                 {EGL_BAD_ACCESS, "EGL_BAD_ACCESS"},
                                                 {EGL_BAD_ALLOC, "EGL_BAD_ALLOC"},
                                                 {EGL_BAD_ATTRIBUTE, "EGL_BAD_ATTRIBUTE"},
                                                 {EGL_BAD_CONFIG, "EGL_BAD_CONFIG"},
                                                 {EGL_BAD_CONTEXT, "EGL_BAD_CONTEXT"},
                                                 {EGL_BAD_DISPLAY, "EGL_BAD_DISPLAY"},
                                                 {EGL_BAD_MATCH, "EGL_BAD_MATCH"},
                                                 {EGL_BAD_PARAMETER, "EGL_BAD_PARAMETER"},
                                                 {EGL_BAD_SURFACE, "EGL_BAD_SURFACE"}}};

std::string errorName(EGLint error) {
    for (ErrorName const& name : kErrorNames) {
        if (name.error == error) return name.text;
    }
    std::ostringstream text;
    text << "EGL error 0x" << std::hex << error;
    return text.str();
}

std::runtime_error failure(std::string const& step) {
    return std::runtime_error(step + " failed (" + errorName(eglGetError()) + ")");
}

bool hasExtension(EGLDisplay display, std::string const& name) {
    char const* const list = eglQueryString(display, EGL_EXTENSIONS);
    if (list == nullptr) return false;
    return (" " + std::string(list) + " ").find(" " + name + " ") != std::string::npos;
}

EGLDisplay angleDisplay() {
    std::vector<EGLAttrib> attributes{kAngleType, kAngleTypeVulkan};
    if (hasExtension(EGL_NO_DISPLAY, "EGL_ANGLE_platform_angle_device_type_swiftshader"))
        attributes.insert(attributes.end(), {kAngleDeviceType, kAngleDeviceTypeSwiftShader});
    attributes.push_back(EGL_NONE);
    return eglGetPlatformDisplay(kPlatformAngle, nullptr, attributes.data());
}

EGLDisplay deviceDisplay() {
    auto const queryDevices = reinterpret_cast<PFNEGLQUERYDEVICESEXTPROC>(eglGetProcAddress("eglQueryDevicesEXT"));
    EGLDeviceEXT device = nullptr;
    EGLint count = 0;
    if (queryDevices == nullptr || queryDevices(1, &device, &count) == EGL_FALSE || count == 0) return EGL_NO_DISPLAY;
    return eglGetPlatformDisplay(EGL_PLATFORM_DEVICE_EXT, device, nullptr);
}

struct Platform {
    std::string extension; // client extension; empty: always available
    EGLDisplay (*display)();
};

std::vector<Platform> platforms() {
    return {
        {"EGL_ANGLE_platform_angle", angleDisplay},
        {"EGL_MESA_platform_surfaceless",
         [] { return eglGetPlatformDisplay(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr); }},
        {"EGL_EXT_platform_device", deviceDisplay},
        {"", [] { return eglGetDisplay(EGL_DEFAULT_DISPLAY); }},
    };
}

EGLDisplay initialisedDisplay() {
    std::string tried;
    for (auto const& platform : platforms()) {
        if (!platform.extension.empty() && !hasExtension(EGL_NO_DISPLAY, platform.extension)) continue;
        auto* const display = platform.display();
        if (display != EGL_NO_DISPLAY && eglInitialize(display, nullptr, nullptr) == EGL_TRUE) return display;
        char const* const step = display == EGL_NO_DISPLAY ? "no display" : "eglInitialize failed";
        auto const name = platform.extension.empty() ? "default display" : platform.extension;
        tried += (tried.empty() ? "" : "; ") + name + ": " + step + " (" + errorName(eglGetError()) + ")";
    }
    throw std::runtime_error("eglInitialize failed on every display: " + tried);
}

// Found once and never terminated: EGL shares one display per platform in a process, and eglTerminate would end it for
// all users.
EGLDisplay sharedDisplay() {
    static auto* const display = initialisedDisplay();
    return display;
}

// Without a choice of colour sizes the smallest config wins, which may be 5:6:5.
EGLConfig chooseConfig(EGLDisplay display, EGLint surfaceType) {
    std::array<EGLint, 15> const attributes{EGL_SURFACE_TYPE,
                                            surfaceType,
                                            EGL_RENDERABLE_TYPE,
                                            EGL_OPENGL_ES3_BIT,
                                            EGL_RED_SIZE,
                                            8,
                                            EGL_GREEN_SIZE,
                                            8,
                                            EGL_BLUE_SIZE,
                                            8,
                                            EGL_ALPHA_SIZE,
                                            8,
                                            EGL_DEPTH_SIZE,
                                            0,
                                            EGL_NONE};
    EGLConfig config = nullptr;
    EGLint count = 0;
    if (eglChooseConfig(display, attributes.data(), &config, 1, &count) == EGL_FALSE || count == 0) return nullptr;
    return config;
}

} // namespace

struct EglContext::State {
    EGLDisplay display = sharedDisplay();
    size_t width = 0;
    size_t height = 0;
    EGLSurface surface = EGL_NO_SURFACE;
    EGLContext context = EGL_NO_CONTEXT;

    State(size_t wantedWidth, size_t wantedHeight) : width(wantedWidth), height(wantedHeight) {}
    ~State() {
        if (context != EGL_NO_CONTEXT && eglGetCurrentContext() == context)
            eglMakeCurrent(display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
        if (surface != EGL_NO_SURFACE) eglDestroySurface(display, surface);
        if (context != EGL_NO_CONTEXT) eglDestroyContext(display, context);
    }
    State(State const&) = delete;
    State& operator=(State const&) = delete;

    void create() {
        if (eglBindAPI(EGL_OPENGL_ES_API) == EGL_FALSE) throw failure("eglBindAPI(EGL_OPENGL_ES_API)");
        EGLConfig config = chooseConfig(display, EGL_PBUFFER_BIT);
        if (config != nullptr) {
            std::array<EGLint, 5> const size{EGL_WIDTH, static_cast<EGLint>(width), EGL_HEIGHT,
                                             static_cast<EGLint>(height), EGL_NONE};
            surface = eglCreatePbufferSurface(display, config, size.data());
            if (surface == EGL_NO_SURFACE) throw failure("eglCreatePbufferSurface");
        } else if (hasExtension(display, "EGL_KHR_surfaceless_context")) {
            config = chooseConfig(display, 0);
        }
        if (config == nullptr) throw failure("eglChooseConfig for OpenGL ES 3");
        // No debug attribute: Mesa's softpipe refuses a debug context, and messages come without it as well.
        std::array<EGLint, 3> const version{EGL_CONTEXT_CLIENT_VERSION, 3, EGL_NONE};
        context = eglCreateContext(display, config, EGL_NO_CONTEXT, version.data());
        if (context == EGL_NO_CONTEXT) throw failure("eglCreateContext for OpenGL ES 3");
    }
};

EglContext::EglContext(size_t width, size_t height) : state_(std::make_unique<State>(width, height)) {
    state_->create();
    makeCurrent();
}

EglContext::~EglContext() = default;

void EglContext::makeCurrent() {
    if (eglMakeCurrent(state_->display, state_->surface, state_->surface, state_->context) == EGL_FALSE)
        throw failure("eglMakeCurrent");
}

size_t EglContext::width() const {
    return state_->width;
}
size_t EglContext::height() const {
    return state_->height;
}
