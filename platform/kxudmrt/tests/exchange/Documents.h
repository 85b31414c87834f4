// Documents of tests: a handler that keeps what it hears, and a small document as text.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "exchange/DocumentReader.h"
#include "exchange/DocumentWriter.h"

namespace kxudm::exchange {

inline const std::string kUidA = "01HZX0000000000000000000AA";
inline const std::string kUidB = "01HZX0000000000000000000AB";
inline const std::string kUidC = "01HZX0000000000000000000AC";

class Kept : public DocumentHandler {
  public:
    void Begin(Scope given, std::string&& xml) override {
        scope = given;
        catalogue = std::move(xml);
    }
    void Entity(EntityRecord&& entity) override { entities.push_back(std::move(entity)); }
    void Link(const std::string& first, LinkRecord&& link) override {
        links.emplace_back(first, std::move(link));
    }
    void End(const DocumentCounts& given) override {
        counts = given;
        ended = true;
    }

    Scope scope = Scope::Newest;
    std::string catalogue;
    std::vector<EntityRecord> entities;
    std::vector<std::pair<std::string, LinkRecord>> links;
    DocumentCounts counts;
    bool ended = false;
};

inline void Read(std::string_view text, DocumentHandler& handler, std::size_t piece = 1 << 20) {
    DocumentReader reader(handler, "library.xml");
    for (; !text.empty(); text.remove_prefix(std::min(piece, text.size()))) {
        reader.Feed(text.substr(0, piece));
    }
    reader.Finish();
}

// The text of the error; empty if there is none.
inline std::string ErrorOf(std::string_view text) {
    Kept kept;
    try {
        Read(text, kept);
    } catch (const DocumentException& error) {
        return error.what();
    }
    return {};
}

inline std::string Written(const Kept& kept) {
    std::string text;
    DocumentWriter writer([&](std::string_view bytes) { text += bytes; });
    std::string definitions = kept.catalogue;
    writer.Begin(kept.scope, definitions);
    for (const EntityRecord& entity : kept.entities) {
        writer.Entity(entity);
    }
    for (const auto& [first, link] : kept.links) {
        writer.Link(first, link);
    }
    writer.End();
    return text;
}

}  // namespace kxudm::exchange
