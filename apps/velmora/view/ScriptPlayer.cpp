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

SDL_Event keyEvent(Uint32 type, std::string const& name) {
    SDL_Event event = eventOf(type);
    event.key.keysym.sym = SDL_GetKeyFromName(name.c_str());
    event.key.keysym.scancode = SDL_GetScancodeFromKey(event.key.keysym.sym);
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
    switch (line.deed) {
    case Script::Deed::Key:
        return addEvents({keyEvent(SDL_KEYDOWN, line.text), keyEvent(SDL_KEYUP, line.text)});
    case Script::Deed::Wheel:
        addEvents({motionTo(numbers[0], numbers[1])});
        for (int i = 0; i < std::abs(numbers[2]); ++i)
            addEvents({notch(numbers[2] > 0)});
        return;
    case Script::Deed::Drag:
        return addDrag(numbers);
    case Script::Deed::Minimise:
        return addEvents({windowEvent(SDL_WINDOWEVENT_MINIMIZED)});
    case Script::Deed::Restore:
        return addEvents({windowEvent(SDL_WINDOWEVENT_RESTORED)});
    case Script::Deed::Quit:
        return addEvents({eventOf(SDL_QUIT)});
    case Script::Deed::Resize:
    case Script::Deed::Wait:
    case Script::Deed::Sleep:
    case Script::Deed::Screenshot:
        beats_.push_back({line, {}});
        return;
    }
}

void ScriptPlayer::addEvents(std::vector<SDL_Event> events) {
    beats_.push_back({{}, std::move(events)});
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

void ScriptPlayer::turn(Viewer const& viewer) {
    if (beats_.empty() || !mayGoOn(beats_.front(), viewer.complete)) return;
    Beat const beat = std::move(beats_.front());
    beats_.pop_front();
    for (SDL_Event event : beat.events)
        SDL_PushEvent(&event);
    if (beat.events.empty()) perform(beat.line, viewer);
}

bool ScriptPlayer::mayGoOn(Beat const& beat, bool complete) {
    if (!beat.events.empty()) return true;
    if (beat.line.deed == Script::Deed::Wait) return complete;
    if (beat.line.deed != Script::Deed::Sleep) return true;
    auto const now = std::chrono::steady_clock::now();
    if (!asleepSince_) asleepSince_ = now;
    if (now - *asleepSince_ < std::chrono::milliseconds(beat.line.numbers[0])) return false;
    asleepSince_.reset();
    return true;
}

void ScriptPlayer::perform(Script::Line const& line, Viewer const& viewer) {
    if (line.deed == Script::Deed::Resize) viewer.resize(line.numbers[0], line.numbers[1]);
    if (line.deed == Script::Deed::Screenshot) viewer.screenshot(line.text);
}
