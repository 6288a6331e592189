#pragma once

struct _XDisplay;

namespace zentavo::tests {

/// Events of the X server as if a user had made them.
class XTest {
public:
    XTest();
    ~XTest();
    XTest(const XTest&) = delete;
    XTest& operator=(const XTest&) = delete;

    _XDisplay* display() const noexcept { return display_; }
    void move(int x, int y) const; ///< pixels of the screen
    void button(bool down) const;
    void key(unsigned code, bool down) const;

private:
    template <class... Arguments>
    void fake(const char* function, Arguments... arguments) const;

    _XDisplay* display_;
    void* library_;
};

} // namespace zentavo::tests
