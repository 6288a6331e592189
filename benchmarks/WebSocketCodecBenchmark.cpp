// The inner loops of the WebSocket library by themselves: masking beside a plain copy, UTF-8 checking of three kinds of
// text, and small frames written and parsed.

#include <algorithm>
#include <cstring>
#include <memory>
#include <optional>
#include <string>

#include <benchmark/benchmark.h>

#include "zentavo/websocket/FrameParser.h"
#include "zentavo/websocket/FrameWriter.h"
#include "zentavo/websocket/Masking.h"
#include "zentavo/websocket/UTF8Validator.h"

namespace {

using namespace zentavo::websocket;

constexpr std::size_t megabyte = std::size_t{1} << 20U;

void report(benchmark::State& state, std::size_t bytes) {
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * bytes));
}

void copyBytes(benchmark::State& state) {
    const std::string from(megabyte, 'x');
    std::string to(megabyte, ' ');
    for (auto _ : state) {
        std::memcpy(to.data(), from.data(), from.size());
        benchmark::DoNotOptimize(to.data());
        benchmark::ClobberMemory();
    }
    report(state, megabyte);
}

void maskInPlace(benchmark::State& state) {
    std::string bytes(megabyte, 'x');
    for (auto _ : state) {
        applyMask(bytes, {1, 2, 3, 4}, static_cast<std::uint64_t>(state.range(0)));
        benchmark::DoNotOptimize(bytes.data());
        benchmark::ClobberMemory();
    }
    report(state, megabyte);
}

/// As a client sends: copied, framed and masked.
void writeMasked(benchmark::State& state) {
    const std::string payload(static_cast<std::size_t>(state.range(0)), 'x');
    std::string out;
    for (auto _ : state) {
        out.clear();
        appendFrame(out, {true, false, Opcode::binary, 0}, payload, MaskKey{1, 2, 3, 4});
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
    report(state, payload.size());
}

void checkText(benchmark::State& state, std::string_view sample) {
    std::string text;
    while (text.size() < megabyte) {
        text += sample;
    }
    for (auto _ : state) {
        UTF8Validator validator;
        benchmark::DoNotOptimize(validator.feed(text) && validator.complete());
    }
    report(state, text.size());
}

/// Frames of 16 bytes, as many as one read brings; per frame. A server's reader takes their masks off as well.
void parseSmall(benchmark::State& state, Role reader) {
    const auto key = reader == Role::server ? std::optional(MaskKey{1, 2, 3, 4}) : std::nullopt;
    std::string frames;
    for (int i = 0; i < 1000; ++i) {
        appendFrame(frames, {true, false, Opcode::binary, 0}, "0123456789abcdef", key);
    }
    for (auto _ : state) {
        FrameParser parser(reader, false);
        std::span<char> input(frames);
        while (parser.next(input) == FrameParser::Step::piece) {
            benchmark::DoNotOptimize(parser.piece().data.data());
        }
    }
    state.SetItemsProcessed(state.iterations() * 1000);
}

BENCHMARK(copyBytes);
BENCHMARK(maskInPlace)->Arg(0)->Arg(3);
BENCHMARK(writeMasked)->Arg(16)->Arg(1024)->Arg(65536)->Arg(1 << 20);
BENCHMARK_CAPTURE(checkText, ascii, "The quick brown fox jumps over the lazy dog, 42 times. ");
BENCHMARK_CAPTURE(checkText, latin, "Zwölf Boxkämpfer jagen Víctor quer über den großen Sylter Deich. ");
BENCHMARK_CAPTURE(checkText, cjk, "いろはにほへと ちりぬるを 😀 天地玄黃 宇宙洪荒 🚀");
BENCHMARK_CAPTURE(parseSmall, client, Role::client);
BENCHMARK_CAPTURE(parseSmall, server, Role::server);

} // namespace
