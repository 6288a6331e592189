#include "ports/gtk/GtkTextLabel.h"

#include <utility>

#include "ports/gtk/MainThread.h"

namespace zentavo::gtk {

GtkTextLabel::GtkTextLabel(std::shared_ptr<platform::MainQueue> mainQueue)
    : GtkView(std::move(mainQueue)), layout_(canvas().widget()) {
    canvas().setOnDraw([this](GtkSnapshot* snapshot, int width, int) { layout_.draw(snapshot, colour_, width); });
}

void GtkTextLabel::setText(std::string text) {
    MainThread::require();
    text_ = std::move(text);
    gtk_accessible_update_property(reinterpret_cast<GtkAccessible*>(canvas().widget()), GTK_ACCESSIBLE_PROPERTY_LABEL,
                                   text_.c_str(), -1);
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
