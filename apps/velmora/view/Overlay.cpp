#include "apps/velmora/view/Overlay.h"

#include "apps/velmora/view/Lettering.h"
#include "gles3renderbackend/Gl.h"

#include <backends/imgui_impl_opengl3.h>
#include <imgui.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <memory>
#include <string>
#include <utility>

namespace {

// Keys that fields of text and numbers know.
constexpr std::array<std::pair<ImGuiKey_, SDL_Scancode>, 20> kKeys{{{ImGuiKey_Tab, SDL_SCANCODE_TAB},
                                                                    {ImGuiKey_LeftArrow, SDL_SCANCODE_LEFT},
                                                                    {ImGuiKey_RightArrow, SDL_SCANCODE_RIGHT},
                                                                    {ImGuiKey_UpArrow, SDL_SCANCODE_UP},
                                                                    {ImGuiKey_DownArrow, SDL_SCANCODE_DOWN},
                                                                    {ImGuiKey_Home, SDL_SCANCODE_HOME},
                                                                    {ImGuiKey_End, SDL_SCANCODE_END},
                                                                    {ImGuiKey_Insert, SDL_SCANCODE_INSERT},
                                                                    {ImGuiKey_Delete, SDL_SCANCODE_DELETE},
                                                                    {ImGuiKey_Backspace, SDL_SCANCODE_BACKSPACE},
                                                                    {ImGuiKey_Space, SDL_SCANCODE_SPACE},
                                                                    {ImGuiKey_Enter, SDL_SCANCODE_RETURN},
                                                                    {ImGuiKey_KeyPadEnter, SDL_SCANCODE_KP_ENTER},
                                                                    {ImGuiKey_Escape, SDL_SCANCODE_ESCAPE},
                                                                    {ImGuiKey_A, SDL_SCANCODE_A},
                                                                    {ImGuiKey_C, SDL_SCANCODE_C},
                                                                    {ImGuiKey_V, SDL_SCANCODE_V},
                                                                    {ImGuiKey_X, SDL_SCANCODE_X},
                                                                    {ImGuiKey_Y, SDL_SCANCODE_Y},
                                                                    {ImGuiKey_Z, SDL_SCANCODE_Z}}};

ImVec4 grey(float level, float alpha) {
    return {level, level, level, alpha};
}

// Quiet: greys, and one blue for what can be moved or is chosen.
ImGuiStyle styleFor(float scale, bool isLight) {
    ImVec4 const accent{0.26F, 0.55F, 0.86F, 1};
    ImVec4 const softAccent{0.26F, 0.55F, 0.86F, 0.55F};
    // Light greys lie nearer to white than the dark ones to black.
    auto const tone = [isLight](float level, float alpha) { return grey(isLight ? 1 - 0.6F * level : level, alpha); };
    ImGuiStyle style;
    isLight ? ImGui::StyleColorsLight(&style) : ImGui::StyleColorsDark(&style);
    style.WindowRounding = 6;
    style.ChildRounding = 4;
    style.FrameRounding = 4;
    style.GrabRounding = 4;
    style.PopupRounding = 4;
    style.WindowBorderSize = 0;
    style.WindowPadding = {10, 8};
    style.ItemSpacing = {8, 5};
    auto& colours = style.Colors;
    colours[ImGuiCol_WindowBg] = tone(0.09F, 1);
    colours[ImGuiCol_Text] = grey(isLight ? 0.08F : 0.93F, 1);
    colours[ImGuiCol_TitleBg] = colours[ImGuiCol_TitleBgActive] = tone(0.16F, 1);
    colours[ImGuiCol_FrameBg] = tone(0.22F, 0.9F);
    colours[ImGuiCol_FrameBgHovered] = tone(0.28F, 0.9F);
    colours[ImGuiCol_FrameBgActive] = tone(0.34F, 0.9F);
    colours[ImGuiCol_Button] = tone(0.26F, 0.9F);
    colours[ImGuiCol_ButtonHovered] = tone(0.34F, 1);
    colours[ImGuiCol_ButtonActive] = softAccent;
    colours[ImGuiCol_Header] = tone(0.26F, 0.9F);
    colours[ImGuiCol_HeaderHovered] = tone(0.3F, 1);
    colours[ImGuiCol_HeaderActive] = softAccent;
    colours[ImGuiCol_CheckMark] = colours[ImGuiCol_SliderGrab] = colours[ImGuiCol_SliderGrabActive] = accent;
    colours[ImGuiCol_PlotHistogram] = accent;
    colours[ImGuiCol_Separator] = tone(0.35F, 0.6F);
    style.ScaleAllSizes(scale);
    return style;
}

// Valid until the next call, as Dear ImGui expects.
char const* clipboardText(void* /*unused*/) {
    static std::string text;
    std::unique_ptr<char, decltype(&SDL_free)> const taken(SDL_GetClipboardText(), &SDL_free);
    text = taken == nullptr ? "" : taken.get();
    return text.c_str();
}

void setClipboardText(void* /*unused*/, char const* text) {
    SDL_SetClipboardText(text);
}

} // namespace

Overlay::Overlay() : mouse_{-FLT_MAX, -FLT_MAX} {
    IMGUI_CHECKVERSION();
    ImGui::CreateContext();
    ImGuiIO& io = ImGui::GetIO();
    io.IniFilename = nullptr;
    for (auto const& [key, scancode] : kKeys)
        io.KeyMap[key] = scancode;
    io.GetClipboardTextFn = clipboardText;
    io.SetClipboardTextFn = setClipboardText;
    lettering_ = std::make_unique<Lettering>();
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
    case SDL_KEYDOWN:
    case SDL_KEYUP:
        return setKey(event.key.keysym, event.type == SDL_KEYDOWN);
    case SDL_TEXTINPUT:
        return ImGui::GetIO().AddInputCharactersUTF8(event.text.text);
    case SDL_WINDOWEVENT:
        if (event.window.event == SDL_WINDOWEVENT_LEAVE) mouse_ = {-FLT_MAX, -FLT_MAX};
        return;
    default:
        return;
    }
}

void Overlay::setKey(SDL_Keysym const& key, bool isDown) {
    if (key.scancode < 0 || key.scancode >= SDL_NUM_SCANCODES) return;
    auto const index = static_cast<size_t>(key.scancode);
    keysDown_.at(index) = isDown;
    if (isDown) keysPressed_.at(index) = true;
    ImGuiIO& io = ImGui::GetIO();
    io.KeyCtrl = (key.mod & KMOD_CTRL) != 0;
    io.KeyShift = (key.mod & KMOD_SHIFT) != 0;
    io.KeyAlt = (key.mod & KMOD_ALT) != 0;
    io.KeySuper = (key.mod & KMOD_GUI) != 0;
}

bool Overlay::hasKeys() const {
    return ImGui::GetIO().WantTextInput;
}

void Overlay::leaveField() {
    ImGui::GetIO().WantTextInput = false;
}

bool Overlay::hasMouse() const {
    return ImGui::GetIO().WantCaptureMouse;
}

void Overlay::setTheme(bool isLight) {
    isLight_ = isLight;
    isStyled_ = false;
}

bool Overlay::lacksLetters() const {
    return lettering_->isDue();
}

void Overlay::begin(Size const& frame, double pixelsPerUnit, double secondsSinceLast) {
    ImGuiIO& io = ImGui::GetIO();
    io.DisplaySize = {static_cast<float>(frame.width), static_cast<float>(frame.height)};
    io.DeltaTime = static_cast<float>(std::max(secondsSinceLast, 1e-4));
    io.MousePos = {mouse_[0], mouse_[1]};
    for (size_t button = 0; button < kButtons; ++button)
        io.MouseDown[button] = down_.at(button) || pressed_.at(button);
    io.MouseWheel = wheel_;
    for (size_t key = 0; key < keysDown_.size(); ++key)
        io.KeysDown[key] = keysDown_.at(key) || keysPressed_.at(key);
    keysPressed_ = {};
    pressed_ = {};
    wheel_ = 0;
    prepareLetters(pixelsPerUnit);
    ImGui_ImplOpenGL3_NewFrame();
    ImGui::NewFrame();
}

void Overlay::prepareLetters(double pixelsPerUnit) {
    bool const isOther = lettering_->prepare(pixelsPerUnit);
    if (isOther || !std::exchange(isStyled_, true))
        ImGui::GetStyle() = styleFor(static_cast<float>(std::max(pixelsPerUnit, 1.0)), isLight_);
    if (!isOther) return;
    // The first time the backend makes the texture itself.
    if (std::exchange(hasLetters_, true)) {
        glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 0);
        ImGui_ImplOpenGL3_DestroyFontsTexture();
        ImGui_ImplOpenGL3_CreateFontsTexture();
    }
}

void Overlay::end() {
    ImGui::Render();
    glBindFramebuffer(GL_FRAMEBUFFER, 0);
    ImGui_ImplOpenGL3_RenderDrawData(ImGui::GetDrawData());
}
