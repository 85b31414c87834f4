// A small host: loaded into a plain tclsh, it brings the library along and gives scripts a command
// "host" over one controller.
//
//     host open DEFAULTS FOLDER          opens the library below FOLDER, or creates it
//     host create DEFINITION NAME        makes a content, and answers its item
//     host get ITEM ATTRIBUTE
//     host set ITEM ATTRIBUTE VALUE      answers whether it was set
//     host describe ITEM ATTRIBUTE PROPERTY
//     host attributes ITEM               names, those of scripts last
//     host script ATTRIBUTE PROCEDURE    lets a procedure compute an attribute
//     host hear PROCEDURE                calls it with each item that is updated
//     host responder PROCEDURE           lets it answer questions
//     host ask QUESTION OPTION ...       puts one
//     host close
#include <kxct/EntryPoints.h>
#include <kxct/SignalHandler.h>
#include <kxctinterfaces/Controller.h>
#include <kxctinterfaces/Factory.h>
#include <kxctinterfaces/Item.h>
#include <kxinterp/kxPointerRegistry.h>
#include <kxlmcore/iLibraryManagerResponder.h>
#include <kxlmcore/iSettings.h>
#include <tcl.h>

#include <map>
#include <memory>
#include <stdexcept>
#include <utility>

namespace {

using Words = kxStlVector<kxString>;

// What the responder reads when it is made.
class ResponderSettings : public kxlm::iSettings {
  public:
    explicit ResponderSettings(const kxString& procedure) : _procedure(procedure) {}

    kxString GetString(const kxString& key, int, int) override {
        return key == "ResponderTclProcedure" ? _procedure : kxString();
    }

  private:
    kxString _procedure;
};

class Host {
  public:
    Host() = default;
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;
    ~Host() { Close(); }

    kxVariant Open(const kxString& defaults, const kxString& folder) {
        Close();
        _manager = _factory->CreateMasterDBManager(defaults, folder + "/settings.xml");
        _controller = _factory->CreateController(_manager,
                                                 "local",
                                                 "Castings",
                                                 folder + "/libraries",
                                                 "design",
                                                 folder + "/design",
                                                 "anna",
                                                 "",
                                                 "",
                                                 "");
        return _controller->IsDBValid();
    }

    void Close() {
        if (_controller != nullptr) {
            _factory->DeleteController(std::exchange(_controller, nullptr));
            _factory->DeleteMasterDBManager(std::exchange(_manager, nullptr));
        }
    }

    kxct::Controller& Controller() {
        if (_controller == nullptr) {
            throw std::runtime_error("no library is open");
        }
        return *_controller;
    }

    void SetResponder(const kxString& procedure) {
        ResponderSettings settings(procedure);
        _responder.reset(KXCT_CreateResponder(0, &settings));
    }

    kxString Ask(const kxString& question, const kxStlVector<kxString>& options) {
        if (_responder == nullptr) {
            throw std::runtime_error("nobody answers");
        }
        return _responder->GetAnswer(question, options);
    }

  private:
    kxct::Factory* _factory = CreateFactory();
    kxct::MasterDBManager* _manager = nullptr;
    kxct::Controller* _controller = nullptr;
    std::unique_ptr<kxlm::iLibraryManagerResponder> _responder;
};

// The item that a text stands for. A text of an item that is gone is an error like any other.
kxct::Item* ItemOf(const kxString& text) {
    void* pointer = nullptr;
    kxString type;
    if (!kxPointerRegistry::FromText(text, pointer, type) || type != "kxct::Item") {
        throw std::runtime_error("\"" + text + "\" is no item");
    }
    return static_cast<kxct::Item*>(pointer);
}

using Operation = kxVariant (*)(Host&, const Words&);
struct Entry {
    std::size_t arguments;
    Operation run;
    bool takesMore = false;

    bool Takes(std::size_t count) const {
        return count == arguments || (takesMore && count > arguments);
    }
};

const std::map<kxString, Entry> operations = {
    {"open", {2, [](Host& host, const Words& w) { return host.Open(w[0], w[1]); }}},
    {"create",
     {2,
      [](Host& host, const Words& w) {
          kxct::Item* item = host.Controller().CreateContent(w[0], w[1]);
          return item != nullptr ? kxVariant(item, "kxct::Item") : kxVariant("");
      }}},
    {"get",
     {2,
      [](Host& host, const Words& w) -> kxVariant {
          return host.Controller().GetAttributeValue(ItemOf(w[0]), w[1]);
      }}},
    {"set",
     {3,
      [](Host& host, const Words& w) -> kxVariant {
          kxVariant value(w[2]);
          return host.Controller().SetAttributeValue(ItemOf(w[0]), w[1], value);
      }}},
    {"describe",
     {3,
      [](Host& host, const Words& w) -> kxVariant {
          return host.Controller().GetAttributeDescription(ItemOf(w[0]), w[1], w[2]);
      }}},
    {"attributes",
     {1,
      [](Host& host, const Words& w) -> kxVariant {
          return host.Controller().GetAttributeNameList(ItemOf(w[0]), true, true, false);
      }}},
    {"script",
     {2,
      [](Host& host, const Words& w) -> kxVariant {
          return host.Controller().RegisterScriptedAttribute(w[0], w[1]);
      }}},
    {"hear",
     {1,
      [](Host& host, const Words& w) -> kxVariant {
          host.Controller()
              .GetSignalHandler(kxct::MANAGER_DEFAULT)
              ->ItemUpdated.connect_script(w[0]);
          return {};
      }}},
    {"responder",
     {1,
      [](Host& host, const Words& w) -> kxVariant {
          host.SetResponder(w[0]);
          return {};
      }}},
    {"ask",
     {2,
      [](Host& host, const Words& w) -> kxVariant {
          return host.Ask(w[0], kxStlVector<kxString>(w.begin() + 1, w.end()));
      },
      true}},
    {"close",
     {0,
      [](Host& host, const Words&) -> kxVariant {
          host.Close();
          return {};
      }}},
};

int Run(ClientData data, Tcl_Interp* interp, int count, Tcl_Obj* const* objects) {
    Words words;
    for (int i = 1; i < count; ++i) {
        words.emplace_back(Tcl_GetString(objects[i]));
    }
    const auto found = words.empty() ? operations.end() : operations.find(words.front());
    if (found == operations.end() || !found->second.Takes(words.size() - 1)) {
        Tcl_SetObjResult(interp, Tcl_NewStringObj("wrong operation or number of arguments", -1));
        return TCL_ERROR;
    }
    words.erase(words.begin());
    kxString result;
    int code = TCL_OK;
    try {
        const kxVariant answer = found->second.run(*static_cast<Host*>(data), words);
        result = answer.GetKind() == kxVariant::POINTER
                     ? kxPointerRegistry::ToText(answer.GetPointer(), answer.GetPointerTypeName())
                     : answer.GetString();
    } catch (const std::exception& failure) {
        result = failure.what();
        code = TCL_ERROR;
    }
    Tcl_SetObjResult(interp, Tcl_NewStringObj(result.data(), static_cast<int>(result.size())));
    return code;
}

}  // namespace

// What `load kxhost.so` calls.
extern "C" __attribute__((visibility("default"))) int Kxhost_Init(Tcl_Interp* interp) {
    Kxct_Init(interp);
    Tcl_CreateObjCommand(
        interp, "host", &Run, new Host, [](ClientData data) { delete static_cast<Host*>(data); });
    return TCL_OK;
}
