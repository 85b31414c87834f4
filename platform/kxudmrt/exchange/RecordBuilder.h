// From the tags of a document to its records: each is checked for what can be said of it alone and
// handed on when its element ends.
//
// Layer: exchange, inside; DocumentReader sees to it that elements stand where they may. Throws
// BadTag, to which the reader adds the place. Memory is that of one entity or one link.
#ifndef KXUDMRT_EXCHANGE_RECORDBUILDER_H
#define KXUDMRT_EXCHANGE_RECORDBUILDER_H

#include <kxutl/kxString.h>
#include <kxutl/kxVariant.h>

#include <string>
#include <string_view>

#include "exchange/Document.h"
#include "exchange/DocumentGrammar.h"
#include "exchange/Tag.h"

namespace kxudm::exchange {

class DocumentHandler;

class RecordBuilder {
  public:
    explicit RecordBuilder(DocumentHandler& handler) : handler_(handler) {}

    void SetScope(Scope scope) { scope_ = scope; }
    [[nodiscard]] Scope GetScope() const { return scope_; }

    // An element below the root begins.
    void Read(Element element, Tag& tag);
    // It ends; texts as they stand in the document.
    void EndEntity();
    void EndAttribute(std::string_view text);
    void AddItem(std::string_view text);

    // Whether the attribute is a list, whose texts stand in items.
    [[nodiscard]] bool InList() const { return type_ == kxVariant::STRINGLIST; }
    // Of what came so far.
    [[nodiscard]] const DocumentCounts& Counts() const { return counts_; }

  private:
    void ReadEntity(Tag& tag);
    void ReadRevision(Tag& tag);
    void ReadSavePoint(Tag& tag);
    void ReadAttribute(Tag& tag);
    void ReadFile(Tag& tag);
    void ReadLink(Tag& tag);
    void ReadEnd(Tag& tag);
    std::string TextOf(std::string_view given);
    kxVariant ValueOf(std::string_view given);
    // Of the entity's share of memory.
    void Spend(std::size_t bytes);

    DocumentHandler& handler_;
    Scope scope_ = Scope::AllWithFiles;
    DocumentCounts counts_;
    EntityRecord entity_;
    std::size_t spent_ = 0;
    kxString attribute_;
    kxVariant::Kind type_ = kxVariant::EMPTY;
    kxStlVector<kxString> list_;
    std::string first_;  // whose links come
};

}  // namespace kxudm::exchange

#endif
