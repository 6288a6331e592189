#include "ports/gtk/GtkTextLabel.h"

#include <utility>

#include "ports/gtk/MainThread.h"

namespace zentavo::gtk {

GtkTextLabel::GtkTextLabel(std::shared_ptr<platform::MainQueue> mainQueue)
    : GtkView(std::move(mainQueue), GTK_ACCESSIBLE_ROLE_LABEL), layout_(canvas().widget()) {
    canvas().setOnDraw([this](GtkSnapshot* snapshot, int width, int) { layout_.draw(snapshot, colour_, width); });
}

void GtkTextLabel::setText(std::string text) {
    MainThread::require();
    text_ = std::move(text);
    setSpokenName(text_);
    changed();
}
std::string GtkTextLabel::text() const {
    MainThread::require();
    return text_;
}
void GtkTextLabel::setFont(platform::Font font) {
    MainThread::require();
    font_ = font;
    changed();
}
void GtkTextLabel::setTextColour(platform::Colour colour) {
    MainThread::require();
    colour_ = colour;
    canvas().redraw();
}
void GtkTextLabel::setAlignment(platform::TextAlignment alignment) {
    MainThread::require();
    alignment_ = alignment;
    changed();
}
void GtkTextLabel::setLines(int lines) {
    MainThread::require();
    lines_ = lines;
    changed();
}

void GtkTextLabel::changed() {
    layout_.set(text_, font_, lines_, alignment_);
    canvas().redraw();
}

} // namespace zentavo::gtk
