#include "apps/velmora/view/ScriptPlayer.h"

#include <cstdlib>

namespace {

SDL_Event eventOf(Uint32 type) {
    SDL_Event event{};
    event.type = type;
    return event;
}

SDL_Event windowEvent(SDL_WindowEventID kind) {
    SDL_Event event = eventOf(SDL_WINDOWEVENT);
    event.window.event = static_cast<Uint8>(kind);
    return event;
}

SDL_Event keyEvent(Uint32 type, SDL_Keycode key, SDL_Keymod held = KMOD_NONE) {
    SDL_Event event = eventOf(type);
    event.key.keysym.sym = key;
    event.key.keysym.scancode = SDL_GetScancodeFromKey(key);
    event.key.keysym.mod = static_cast<Uint16>(held);
    return event;
}

SDL_Event textEvent(std::string const& text) {
    SDL_Event event = eventOf(SDL_TEXTINPUT);
    text.copy(event.text.text, SDL_TEXTINPUTEVENT_TEXT_SIZE - 1);
    return event;
}

// Whoever takes it frees the name.
SDL_Event dropEvent(std::string const& file) {
    SDL_Event event = eventOf(SDL_DROPFILE);
    event.drop.file = SDL_strdup(file.c_str());
    return event;
}

SDL_Event motionTo(int x, int y) {
    SDL_Event event = eventOf(SDL_MOUSEMOTION);
    event.motion.x = x;
    event.motion.y = y;
    return event;
}

SDL_Event buttonEvent(Uint32 type, int x, int y) {
    SDL_Event event = eventOf(type);
    event.button.button = SDL_BUTTON_LEFT;
    event.button.x = x;
    event.button.y = y;
    return event;
}

SDL_Event notch(bool up) {
    SDL_Event event = eventOf(SDL_MOUSEWHEEL);
    event.wheel.y = up ? 1 : -1;
    return event;
}

} // namespace

ScriptPlayer::ScriptPlayer(std::vector<Script::Line> const& lines) {
    for (Script::Line const& line : lines)
        add(line);
}

void ScriptPlayer::add(Script::Line const& line) {
    std::vector<int> const& numbers = line.numbers;
    switch (line.action) {
    case Script::Action::Key:
        return addKey(line.text);
    case Script::Action::Type:
        return addEvents({textEvent(line.text)});
    case Script::Action::Drop:
        steps_.push_back({line, {}});
        return;
    case Script::Action::Wheel:
        addEvents({motionTo(numbers[0], numbers[1])});
        for (int i = 0; i < std::abs(numbers[2]); ++i)
            addEvents({notch(numbers[2] > 0)});
        return;
    case Script::Action::Drag:
        return addDrag(numbers);
    case Script::Action::Minimise:
        return addEvents({windowEvent(SDL_WINDOWEVENT_MINIMIZED)});
    case Script::Action::Restore:
        return addEvents({windowEvent(SDL_WINDOWEVENT_RESTORED)});
    case Script::Action::Quit:
        return addEvents({eventOf(SDL_QUIT)});
    case Script::Action::Resize:
    case Script::Action::Wait:
    case Script::Action::Sleep:
    case Script::Action::Screenshot:
        steps_.push_back({line, {}});
        return;
    }
}

void ScriptPlayer::addEvents(std::vector<SDL_Event> events) {
    steps_.push_back({{}, std::move(events)});
}

// Ctrl is held over a turn: what is drawn looks at it once per frame.
void ScriptPlayer::addKey(std::string const& name) {
    auto const [key, isControlHeld] = Script::keyOf(name);
    if (!isControlHeld) return addEvents({keyEvent(SDL_KEYDOWN, key), keyEvent(SDL_KEYUP, key)});
    addEvents({keyEvent(SDL_KEYDOWN, SDLK_LCTRL, KMOD_LCTRL), keyEvent(SDL_KEYDOWN, key, KMOD_LCTRL)});
    addEvents({keyEvent(SDL_KEYUP, key, KMOD_LCTRL), keyEvent(SDL_KEYUP, SDLK_LCTRL)});
}

void ScriptPlayer::addDrag(std::vector<int> const& numbers) {
    constexpr int kMovements = 8;
    addEvents({motionTo(numbers[0], numbers[1])});
    addEvents({buttonEvent(SDL_MOUSEBUTTONDOWN, numbers[0], numbers[1])});
    for (int i = 1; i <= kMovements; ++i)
        addEvents({motionTo(numbers[0] + (numbers[2] - numbers[0]) * i / kMovements,
                            numbers[1] + (numbers[3] - numbers[1]) * i / kMovements)});
    addEvents({buttonEvent(SDL_MOUSEBUTTONUP, numbers[2], numbers[3])});
}

void ScriptPlayer::turn(Host const& host) {
    if (steps_.empty() || !isReady(steps_.front(), host.complete)) return;
    ScriptStep const step = std::move(steps_.front());
    steps_.pop_front();
    for (SDL_Event event : step.events)
        SDL_PushEvent(&event);
    if (step.events.empty()) perform(step.line, host);
}

bool ScriptPlayer::isReady(ScriptStep const& step, bool complete) {
    if (!step.events.empty()) return true;
    if (step.line.action == Script::Action::Wait) return complete;
    if (step.line.action != Script::Action::Sleep) return true;
    auto const now = std::chrono::steady_clock::now();
    if (!asleepSince_) asleepSince_ = now;
    if (now - *asleepSince_ < std::chrono::milliseconds(step.line.numbers[0])) return false;
    asleepSince_.reset();
    return true;
}

void ScriptPlayer::perform(Script::Line const& line, Host const& host) {
    if (line.action == Script::Action::Drop) {
        SDL_Event event = dropEvent(line.text);
        SDL_PushEvent(&event);
    }
    if (line.action == Script::Action::Resize) host.resize(line.numbers[0], line.numbers[1]);
    if (line.action == Script::Action::Screenshot) host.screenshot(line.text);
}
