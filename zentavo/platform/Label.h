#pragma once

#include <string>

#include "zentavo/platform/Views.h"

namespace zentavo::platform {

/// Where lines begin; `natural` is the side on which the text's own language begins them, told by its first letter.
enum class TextAlignment { natural, centre };

/// A view that shows text from its top. Lines break between words, and inside a word only where it is longer than a
/// line; what finds no place ends in an ellipsis. A control character or what is not UTF-8 shows as some mark. Main queue
/// only.
class ZENTAVO_EXPORT Label : public virtual View {
public:
    virtual void setText(std::string text) = 0;
    virtual std::string text() const = 0;
    virtual void setFont(Font font) = 0;
    virtual void setTextColour(Colour colour) = 0;
    virtual void setAlignment(TextAlignment alignment) = 0;
    /// 0: as many as the text takes.
    virtual void setLines(int lines) = 0;
};

} // namespace zentavo::platform
