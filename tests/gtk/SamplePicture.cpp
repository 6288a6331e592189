#include "tests/gtk/SamplePicture.h"

#include <cmath>
#include <functional>
#include <numbers>

#include <cairo.h>

namespace zentavo::tests {

namespace {

std::string drawn(int width, int height, const std::function<void(cairo_t*)>& draw) {
    cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height);
    cairo_t* pen = cairo_create(surface);
    draw(pen);
    cairo_destroy(pen);
    std::string file;
    cairo_surface_write_to_png_stream(
        surface,
        [](void* closure, const unsigned char* data, unsigned length) {
            static_cast<std::string*>(closure)->append(reinterpret_cast<const char*>(data), length);
            return CAIRO_STATUS_SUCCESS;
        },
        &file);
    cairo_surface_destroy(surface);
    return file;
}

void colour(cairo_t* pen, std::uint32_t code) {
    cairo_set_source_rgb(pen, (code >> 16U & 0xFFU) / 255.0, (code >> 8U & 0xFFU) / 255.0, (code & 0xFFU) / 255.0);
}

} // namespace

std::string SamplePicture::bars(int width, int height, const std::vector<std::uint32_t>& colours) {
    return drawn(width, height, [&](cairo_t* pen) {
        const double bar = static_cast<double>(width) / static_cast<double>(colours.size());
        for (std::size_t i = 0; i < colours.size(); ++i) {
            colour(pen, colours[i]);
            cairo_rectangle(pen, static_cast<double>(i) * bar, 0, bar, height);
            cairo_fill(pen);
        }
    });
}

std::string SamplePicture::landscape(int width, int height, int number) {
    struct Mood {
        std::uint32_t sky, sun, far, near;
    };
    static constexpr Mood moods[] = {{0x9fd3ff, 0xfff2a8, 0x5d93a8, 0x2f6f62},
                                     {0xffb48a, 0xfff0d0, 0x9c5a7c, 0x4a2c5a},
                                     {0x24315f, 0xf4f1de, 0x3d4f8a, 0x151c38}};
    const Mood mood = moods[number % 3];
    return drawn(width, height, [&](cairo_t* pen) {
        colour(pen, mood.sky);
        cairo_paint(pen);
        colour(pen, mood.sun);
        cairo_arc(pen, width * 0.7, height * 0.35, height * 0.14, 0, 2 * std::numbers::pi);
        cairo_fill(pen);
        for (const bool near : {false, true}) {
            colour(pen, near ? mood.near : mood.far);
            cairo_move_to(pen, 0, height);
            for (int x = 0; x <= width; ++x) {
                const double wave = std::sin(x * 7.0 / width + number + (near ? 2 : 0));
                cairo_line_to(pen, x, height * ((near ? 0.8 : 0.62) - 0.1 * wave));
            }
            cairo_line_to(pen, width, height);
            cairo_fill(pen);
        }
    });
}

std::string SamplePicture::star(int side, std::uint32_t code, bool filled) {
    return drawn(side, side, [&](cairo_t* pen) {
        colour(pen, code);
        for (int i = 0; i < 10; ++i) {
            const double radius = side * (i % 2 == 0 ? 0.46 : 0.2);
            const double angle = i * std::numbers::pi / 5 - std::numbers::pi / 2;
            cairo_line_to(pen, side / 2.0 + radius * std::cos(angle), side * 0.53 + radius * std::sin(angle));
        }
        cairo_close_path(pen);
        cairo_set_line_width(pen, side / 16.0);
        cairo_set_line_join(pen, CAIRO_LINE_JOIN_ROUND);
        if (filled) {
            cairo_fill_preserve(pen);
        }
        cairo_stroke(pen);
    });
}

std::string SamplePicture::announced(std::uint32_t width, std::uint32_t height) {
    std::string file = bars(1, 1, {0});
    // The size stands behind the signature and the name of the first chunk; the decoder checks its sum, too.
    const auto put = [&](std::size_t place, std::uint32_t number) {
        for (int i = 0; i < 4; ++i) {
            file[place + static_cast<std::size_t>(i)] =
                static_cast<char>(number >> (24U - 8U * static_cast<unsigned>(i)));
        }
    };
    put(16, width);
    put(20, height);
    std::uint32_t sum = 0xFFFFFFFFU;
    for (std::size_t i = 12; i < 29; ++i) {
        sum ^= static_cast<unsigned char>(file[i]);
        for (int k = 0; k < 8; ++k) {
            sum = (sum & 1U) != 0 ? sum >> 1U ^ 0xEDB88320U : sum >> 1U;
        }
    }
    put(29, ~sum);
    return file;
}

} // namespace zentavo::tests
