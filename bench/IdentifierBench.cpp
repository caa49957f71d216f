#include "iOS/WindowIdentifier.h"

#include <benchmark/benchmark.h>
#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#include <simdjson.h>
#include <string>
#include <string_view>

// The tag in a window's title, written and read, against copying its texts, and beside two good JSON libraries that
// give the same.

namespace {

using namespace paneweld;

auto const identifier = WindowIdentifier::brainstorm("main-7", "Ideas for the summer");
std::string const encodedText = identifier->encoded();
std::string const plainTitle = "Settings";

void encode(benchmark::State& state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(identifier->encoded());
}
BENCHMARK(encode)->Name("identifier/encode");

void encodeFloor(benchmark::State& state)
{
    for (auto _ : state) {
        std::string text;
        text.reserve(encodedText.size());
        text += R"({"id":")";
        text += identifier->id();
        text += R"(","localized_title":")";
        text += identifier->localizedTitle();
        text += R"(","type":")";
        text += identifier->type();
        text += R"("})";
        benchmark::DoNotOptimize(text);
    }
}
BENCHMARK(encodeFloor)->Name("identifier/encode/floor");

void encodeRapidJSON(benchmark::State& state)
{
    rapidjson::StringBuffer buffer;
    for (auto _ : state) {
        buffer.Clear();
        rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
        auto const add = [&](std::string_view key, std::string const& text) {
            writer.Key(key.data(), static_cast<unsigned>(key.size()));
            writer.String(text.data(), static_cast<unsigned>(text.size()));
        };
        writer.StartObject();
        add("id", identifier->id());
        add("localized_title", identifier->localizedTitle());
        add("type", identifier->type());
        writer.EndObject();
        benchmark::DoNotOptimize(std::string(buffer.GetString(), buffer.GetSize()));
    }
}
BENCHMARK(encodeRapidJSON)->Name("identifier/encode/rapidjson");

void decode(benchmark::State& state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(WindowIdentifier::from(encodedText));
}
BENCHMARK(decode)->Name("identifier/decode");

void decodeFloor(benchmark::State& state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(
            WindowIdentifier::create(identifier->id(), identifier->type(), identifier->localizedTitle()));
}
BENCHMARK(decodeFloor)->Name("identifier/decode/floor");

std::shared_ptr<WindowIdentifier> fromRapidJSON(std::string const& json)
{
    rapidjson::Document document;
    document.Parse(json.data(), json.size());
    if (document.HasParseError() || !document.IsObject())
        return nullptr;
    std::string texts[3];
    char const* const keys[] = { "id", "type", "localized_title" };
    for (int i = 0; i < 3; ++i) {
        if (!document.HasMember(keys[i]) || !document[keys[i]].IsString())
            return nullptr;
        texts[i].assign(document[keys[i]].GetString(), document[keys[i]].GetStringLength());
    }
    return WindowIdentifier::create(std::move(texts[0]), std::move(texts[1]), std::move(texts[2]));
}

std::shared_ptr<WindowIdentifier> fromSimdJSON(simdjson::ondemand::parser& parser, simdjson::padded_string const& json)
{
    simdjson::ondemand::document document;
    simdjson::ondemand::object object;
    if (parser.iterate(json).get(document) != simdjson::SUCCESS
        || document.get_object().get(object) != simdjson::SUCCESS)
        return nullptr;
    std::string_view id, type, title;
    if (object["id"].get_string().get(id) != simdjson::SUCCESS
        || object["localized_title"].get_string().get(title) != simdjson::SUCCESS
        || object["type"].get_string().get(type) != simdjson::SUCCESS)
        return nullptr;
    return WindowIdentifier::create(std::string(id), std::string(type), std::string(title));
}

void decodeRapidJSON(benchmark::State& state, std::string const& text)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(fromRapidJSON(text));
}
BENCHMARK_CAPTURE(decodeRapidJSON, tag, encodedText)->Name("identifier/decode/rapidjson");

// It wants its text with room behind it, which a title has not, so that the copy is part of the work.
void decodeSimdJSON(benchmark::State& state, std::string const& text)
{
    simdjson::ondemand::parser parser;
    for (auto _ : state)
        benchmark::DoNotOptimize(fromSimdJSON(parser, simdjson::padded_string(text)));
}
BENCHMARK_CAPTURE(decodeSimdJSON, tag, encodedText)->Name("identifier/decode/simdjson");

// A title for people, which most are.
void refuse(benchmark::State& state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(WindowIdentifier::from(plainTitle));
}
BENCHMARK(refuse)->Name("identifier/refuse");
BENCHMARK_CAPTURE(decodeRapidJSON, title, plainTitle)->Name("identifier/refuse/rapidjson");
BENCHMARK_CAPTURE(decodeSimdJSON, title, plainTitle)->Name("identifier/refuse/simdjson");

} // namespace
