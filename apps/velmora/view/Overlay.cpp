#include "apps/velmora/view/Overlay.h"

#include "gles3renderbackend/Gl.h"

#include <backends/imgui_impl_opengl3.h>
#include <imgui.h>

#include <algorithm>
#include <cfloat>
#include <cmath>

Overlay::Overlay() : mouse_{-FLT_MAX, -FLT_MAX} {
    IMGUI_CHECKVERSION();
    ImGui::CreateContext();
    ImGui::GetIO().IniFilename = nullptr;
    ImGui::StyleColorsDark();
    ImGui_ImplOpenGL3_Init("#version 300 es");
}

Overlay::~Overlay() {
    ImGui_ImplOpenGL3_Shutdown();
    ImGui::DestroyContext();
}

void Overlay::handle(SDL_Event const& event, double pixelsPerUnit) {
    auto const moveTo = [&](int x, int y) {
        mouse_ = {static_cast<float>(x * pixelsPerUnit), static_cast<float>(y * pixelsPerUnit)};
    };
    switch (event.type) {
    case SDL_MOUSEMOTION:
        return moveTo(event.motion.x, event.motion.y);
    case SDL_MOUSEBUTTONDOWN:
    case SDL_MOUSEBUTTONUP: {
        // SDL counts left, middle, right from 1; ImGui left, right, middle from 0.
        constexpr std::array<size_t, kButtons> kOrder{0, 2, 1};
        if (event.button.button < 1 || event.button.button > kButtons) return;
        size_t const button = kOrder.at(event.button.button - 1u);
        down_.at(button) = event.type == SDL_MOUSEBUTTONDOWN;
        if (down_.at(button)) pressed_.at(button) = true;
        return moveTo(event.button.x, event.button.y);
    }
    case SDL_MOUSEWHEEL:
        wheel_ += static_cast<float>(event.wheel.y);
        return;
    case SDL_WINDOWEVENT:
        if (event.window.event == SDL_WINDOWEVENT_LEAVE) mouse_ = {-FLT_MAX, -FLT_MAX};
        return;
    default:
        return;
    }
}

bool Overlay::hasMouse() const {
    return ImGui::GetIO().WantCaptureMouse;
}

void Overlay::begin(Size const& frame, double pixelsPerUnit, double secondsSinceLast) {
    ImGuiIO& io = ImGui::GetIO();
    io.DisplaySize = {static_cast<float>(frame.width), static_cast<float>(frame.height)};
    // ImGui's own letters are of fixed pixels.
    io.FontGlobalScale = static_cast<float>(std::max(1.0, std::round(pixelsPerUnit)));
    io.DeltaTime = static_cast<float>(std::max(secondsSinceLast, 1e-4));
    io.MousePos = {mouse_[0], mouse_[1]};
    for (size_t button = 0; button < kButtons; ++button)
        io.MouseDown[button] = down_.at(button) || pressed_.at(button);
    io.MouseWheel = wheel_;
    pressed_ = {};
    wheel_ = 0;
    ImGui_ImplOpenGL3_NewFrame();
    ImGui::NewFrame();
}

void Overlay::end() {
    ImGui::Render();
    glBindFramebuffer(GL_FRAMEBUFFER, 0);
    ImGui_ImplOpenGL3_RenderDrawData(ImGui::GetDrawData());
}
