// Scripted attributes, with a real Tcl interpreter behind the framework.
#include <kxct/EntryPoints.h>
#include <kxct/KXCTFramework.h>
#include <kxinterp/kxPointerRegistry.h>
#include <tcl.h>

#include "tests/controller/ControllerFixture.h"

namespace kxct::test {
namespace {

using testing::_;
using testing::ElementsAre;
using testing::IsEmpty;

// An interpreter for the life of the process, as a host has it.
Tcl_Interp* HostInterp() {
    static Tcl_Interp* interp = [] {
        Tcl_FindExecutable(nullptr);
        Tcl_Interp* made = Tcl_CreateInterp();
        Kxct_Init(made);
        return made;
    }();
    return interp;
}

class ControllerImplScripted : public ControllerTest {
  protected:
    ControllerImplScripted() {
        auto& part = definitions->Add("UDMDeck");
        part.attributes.push_back({.name = "mass", .displayName = "Mass", .dataType = "Double"});
        State& state = Entity("A:1", "UDMDeck", "Bridge");
        state.attributes["mass"] = kxVariant(12.5);
        item = ItemOf("A:1");
        // Writes down its arguments and answers what `answer` holds.
        Run("set calls {}; set answer {}");
        Run("proc spy {args} {lappend ::calls $args; return $::answer}");
        controller->RegisterScriptedAttribute("cost", "spy");
    }

    static void Run(const kxString& script) {
        ASSERT_EQ(Tcl_Eval(HostInterp(), script.c_str()), TCL_OK)
            << Tcl_GetStringResult(HostInterp());
    }
    static std::string Variable(const char* name) {
        return Tcl_GetVar(HostInterp(), name, TCL_GLOBAL_ONLY);
    }
    static kxString PointerText(Item* pointer) {
        return kxPointerRegistry::ToText(pointer, "kxct::Item");
    }

    Item* item = nullptr;
    kxVariant value{"new value"};
};

// The same with a Tcl command "controller", by which scripts call back:
//
//     controller get ITEM NAME          the value
//     controller set ITEM NAME VALUE    whether it was set
//     controller register NAME PROCEDURE
//     controller unregister NAME
//     controller clear                  deletes all items
//
// What isn't the text of a living item is an error.
class ControllerImplCalledBack : public ControllerImplScripted {
  protected:
    ControllerImplCalledBack() {
        Tcl_CreateObjCommand(HostInterp(), "controller", &Answer, controller.get(), nullptr);
    }
    ~ControllerImplCalledBack() override { Tcl_DeleteCommand(HostInterp(), "controller"); }

  private:
    static int Answer(ClientData data, Tcl_Interp* interp, int count, Tcl_Obj* const* words) {
        auto& called = *static_cast<ControllerProbe*>(data);
        const kxString verb = Tcl_GetString(words[1]);
        const kxString first = count > 2 ? Tcl_GetString(words[2]) : "";
        const kxString second = count > 3 ? Tcl_GetString(words[3]) : "";
        kxVariant result;
        if (verb == "clear") {
            called.ClearCache(MANAGER_DEFAULT);
        } else if (verb == "register") {
            result = called.RegisterScriptedAttribute(first, second);
        } else if (verb == "unregister") {
            result = called.UnRegisterScriptedAttribute(first);
        } else {
            void* pointer = nullptr;
            kxString type;
            if (!kxPointerRegistry::FromText(first, pointer, type) || type != "kxct::Item") {
                Tcl_SetResult(interp, const_cast<char*>("no such item"), TCL_STATIC);
                return TCL_ERROR;
            }
            kxVariant given(count > 4 ? Tcl_GetString(words[4]) : "");
            auto* known = static_cast<Item*>(pointer);
            result = verb == "set" ? kxVariant(called.SetAttributeValue(known, second, given))
                                   : called.GetAttributeValue(known, second);
        }
        Tcl_SetObjResult(interp, Tcl_NewStringObj(result.GetString().c_str(), -1));
        return TCL_OK;
    }
};

TEST_F(ControllerImplScripted, RegisteringTwiceKeepsTheFirstProcedure) {
    EXPECT_FALSE(controller->RegisterScriptedAttribute("cost", "other"));
    Run("proc other {args} {return wrong}; set answer right");
    EXPECT_EQ(controller->GetAttributeValue(item, "cost"), kxVariant("right"));
}

TEST_F(ControllerImplScripted, UnregisteringAnUnknownNameIsFalse) {
    EXPECT_FALSE(controller->UnRegisterScriptedAttribute("price"));
    EXPECT_TRUE(controller->UnRegisterScriptedAttribute("cost"));
    EXPECT_FALSE(controller->UnRegisterScriptedAttribute("cost"));
    EXPECT_THAT(controller->GetScriptedAttributes(), IsEmpty());
}

TEST_F(ControllerImplScripted, NamesComeInByteOrderShorterFirst) {
    for (const char* name : {"b", "costs", "Z", "\xC3\xA4", "a"}) {
        EXPECT_TRUE(controller->RegisterScriptedAttribute(name, "spy"));
    }
    EXPECT_THAT(controller->GetScriptedAttributes(),
                ElementsAre("Z", "a", "b", "cost", "costs", "\xC3\xA4"));
}

TEST_F(ControllerImplScripted, ANameEndsAtItsFirstZeroByte) {
    EXPECT_TRUE(controller->RegisterScriptedAttribute(kxString("price\0x", 7), "spy"));
    EXPECT_THAT(controller->GetScriptedAttributes(), ElementsAre("cost", "price"));
    EXPECT_FALSE(controller->RegisterScriptedAttribute("price", "spy"));
}

TEST_F(ControllerImplScripted, RegisteringDoesNotLookForTheProcedure) {
    EXPECT_TRUE(controller->RegisterScriptedAttribute("price", "no_such_procedure"));
    EXPECT_EQ(controller->GetAttributeValue(item, "price"), kxVariant(""));
}

TEST_F(ControllerImplScripted, GetPassesVerbAndItem) {
    Run("set answer {12 EUR}");
    EXPECT_EQ(controller->GetAttributeValue(item, "cost"), kxVariant("12 EUR"));
    EXPECT_EQ(Variable("calls"), "{get " + PointerText(item) + "}");
}

TEST_F(ControllerImplScripted, GetByIdPassesTheItemOfTheId) {
    controller->GetAttributeValue("A:1", "cost");
    EXPECT_EQ(Variable("calls"), "{get " + PointerText(item) + "}");
}

TEST_F(ControllerImplScripted, TheItemGoesAsAPointerOfTheInterfacesType) {
    controller->GetAttributeValue(item, "cost");
    void* pointer = nullptr;
    kxString type;
    ASSERT_TRUE(kxPointerRegistry::FromText(PointerText(item), pointer, type));
    EXPECT_EQ(static_cast<Item*>(pointer), item);
    EXPECT_EQ(type, "kxct::Item");
}

TEST_F(ControllerImplScripted, SetPassesTheValueAndAnswersAsABoolean) {
    Run("set answer 1");
    EXPECT_TRUE(controller->SetAttributeValue(item, "cost", value));
    EXPECT_EQ(Variable("calls"), "{set " + PointerText(item) + " {new value}}");
    Run("set answer 0");
    EXPECT_FALSE(controller->SetAttributeValue(item, "cost", value));
    EXPECT_EQ(value, kxVariant("new value"));
}

TEST_F(ControllerImplScripted, SetByIdRunsTheScriptToo) {
    Run("set answer true");
    EXPECT_TRUE(controller->SetAttributeValue("A:1", "cost", value));
}

TEST_F(ControllerImplScripted, NextPassesVerbAndItem) {
    Run("set answer yes");
    EXPECT_TRUE(controller->NextAttributeValue(item, "cost"));
    EXPECT_EQ(Variable("calls"), "{next " + PointerText(item) + "}");
    Run("set answer no");
    EXPECT_FALSE(controller->NextAttributeValue(item, "cost"));
}

TEST_F(ControllerImplScripted, EditablePassesVerbAndItem) {
    Run("set answer 1");
    EXPECT_TRUE(controller->IsAttributeEditable(item, "cost"));
    EXPECT_EQ(Variable("calls"), "{editable " + PointerText(item) + "}");
    Run("set answer 0");
    EXPECT_FALSE(controller->IsAttributeEditable(item, "cost"));
}

TEST_F(ControllerImplScripted, DescriptionPassesTheKey) {
    Run("set answer {Cost in euro}");
    EXPECT_EQ(controller->GetAttributeDescription(item, "cost", "displayname"),
              kxVariant("Cost in euro"));
    EXPECT_EQ(Variable("calls"), "{description " + PointerText(item) + " displayname}");
}

TEST_F(ControllerImplScripted, DescriptionOfANullItemCallsTheScriptWithANullPointer) {
    Run("set answer text");
    EXPECT_EQ(controller->GetAttributeDescription(nullptr, "cost", "type"), kxVariant("text"));
    EXPECT_EQ(Variable("calls"), "{description kxptr:kxct::Item:0 type}");
}

TEST_F(ControllerImplScripted, AScriptedNameShadowsARealOneInEveryOperation) {
    controller->RegisterScriptedAttribute("mass", "spy");
    EXPECT_CALL(*profile, SetAttributeValue).Times(0);
    Run("set answer 1");
    EXPECT_EQ(controller->GetAttributeValue(item, "mass"), kxVariant("1"));
    EXPECT_EQ(controller->GetAttributeDescription(item, "mass", "displayname"), kxVariant("1"));
    EXPECT_TRUE(controller->SetAttributeValue(item, "mass", value));
    EXPECT_TRUE(controller->NextAttributeValue(item, "mass"));
    entities["A:1"]->isEditable = false;
    EXPECT_TRUE(controller->IsAttributeEditable(item, "mass"));
    controller->UnRegisterScriptedAttribute("mass");
    EXPECT_EQ(controller->GetAttributeValue(item, "mass"), kxVariant(12.5));
}

TEST_F(ControllerImplScripted, TheSettingsDescribeBeforeTheScript) {
    WriteFile(
        "pa.xml",
        R"(<kxct:PASettings><ContentDefinition name="Normal">)"
        R"(<Metadata name="cost" displayname="Price"/></ContentDefinition></kxct:PASettings>)");
    controller->SetAttributeSettingsFile(Path("pa.xml"));
    Run("set answer script");
    EXPECT_EQ(controller->GetAttributeDescription(item, "cost", "displayname"), kxVariant("Price"));
    EXPECT_EQ(controller->GetAttributeDescription(item, "cost", "type"), kxVariant("script"));
}

TEST_F(ControllerImplScripted, SettingRaisesItemUpdatedWhateverTheScriptAnswers) {
    ItemSpy updated(controller->GetSignalHandler(MANAGER_DEFAULT)->ItemUpdated);
    ItemSpy history(controller->GetSignalHandler(MANAGER_HISTORY)->ItemUpdated);
    Run("set answer 0");
    EXPECT_FALSE(controller->SetAttributeValue(item, "cost", value));
    EXPECT_THAT(updated.items, ElementsAre(item));
    EXPECT_FALSE(controller->NextAttributeValue(item, "cost"));
    EXPECT_THAT(updated.items, ElementsAre(item, item));
    Run("proc spy {args} {error no}");
    EXPECT_FALSE(controller->SetAttributeValue(item, "cost", value));
    EXPECT_EQ(updated.items.size(), 3U);
    EXPECT_THAT(history.items, IsEmpty());
}

TEST_F(ControllerImplScripted, ReadingRaisesNothing) {
    ItemSpy updated(controller->GetSignalHandler(MANAGER_DEFAULT)->ItemUpdated);
    controller->GetAttributeValue(item, "cost");
    controller->GetAttributeDescription(item, "cost", "type");
    controller->IsAttributeEditable(item, "cost");
    EXPECT_THAT(updated.items, IsEmpty());
}

TEST_F(ControllerImplScripted, AScriptThatFailsLeavesTheEmptyTextWhichReadsAsFalse) {
    Run("proc spy {args} {error broken}");
    EXPECT_EQ(controller->GetAttributeValue(item, "cost"), kxVariant(""));
    EXPECT_EQ(controller->GetAttributeDescription(item, "cost", "type"), kxVariant(""));
    EXPECT_FALSE(controller->IsAttributeEditable(item, "cost"));
    EXPECT_FALSE(controller->NextAttributeValue(item, "cost"));
}

TEST_F(ControllerImplScripted, AScriptMayUnregisterItsOwnAttribute) {
    Run("proc spy {args} {unregister cost; return done}");
    static ControllerImpl* current = nullptr;
    current = controller.get();
    Tcl_CreateObjCommand(
        HostInterp(),
        "unregister",
        [](ClientData, Tcl_Interp*, int, Tcl_Obj* const* words) {
            return current->UnRegisterScriptedAttribute(Tcl_GetString(words[1])) ? TCL_OK
                                                                                 : TCL_ERROR;
        },
        nullptr,
        nullptr);
    EXPECT_EQ(controller->GetAttributeValue(item, "cost"), kxVariant("done"));
    EXPECT_THAT(controller->GetScriptedAttributes(), IsEmpty());
    Tcl_DeleteCommand(HostInterp(), "unregister");
}

TEST_F(ControllerImplScripted, AnUnregisteredNameAnswersNothingAndCallsNothing) {
    EXPECT_TRUE(controller->_GetScriptedAttributeValue(item, "price").IsEmpty());
    EXPECT_TRUE(controller->_GetScriptedAttributeDescription(item, "price", "type").IsEmpty());
    EXPECT_FALSE(controller->_SetScriptedAttributeValue(item, "price", value));
    EXPECT_FALSE(controller->_NextScriptedAttributeValue(item, "price"));
    EXPECT_FALSE(controller->_IsScriptedAttributeEditable(item, "price"));
    EXPECT_EQ(Variable("calls"), "");
}

TEST_F(ControllerImplScripted, AValueReachesTheScriptInItsKind) {
    Run("proc spy {verb item value} {set ::answer [expr {$value * 2}]}");
    kxVariant number(21);
    controller->SetAttributeValue(item, "cost", number);
    EXPECT_EQ(Variable("answer"), "42");
    Run("proc spy {verb item value} {set ::answer [llength $value]; return 1}");
    kxVariant list(kxStlVector<kxString>{"a b", "c", ""});
    EXPECT_TRUE(controller->SetAttributeValue(item, "cost", list));
    EXPECT_EQ(Variable("answer"), "3");
}

TEST_F(ControllerImplScripted, WhateverAScriptReturnsIsReadAsAText) {
    const std::pair<const char*, const char*> answers[] = {
        {"return {}", ""},
        {"expr {1 + 1}", "2"},
        {"expr {0.1 + 0.2}", "0.30000000000000004"},
        {"expr {1 == 1}", "1"},
        {"list a {b c} {}", "a {b c} {}"},
        {"dict create k v", "k v"},
        {"return -code return early", "early"},
        {"string repeat ab 3", "ababab"},
        {"return \\u00e4\\u4e16", "\xC3\xA4\xE4\xB8\x96"},
        {"return kxptr:kxct::Item:ffffffff", "kxptr:kxct::Item:ffffffff"},
    };
    for (const auto& [script, text] : answers) {
        Run(kxString("proc spy {args} {") + script + "}");
        const kxVariant answer = controller->GetAttributeValue(item, "cost");
        EXPECT_EQ(answer.GetKind(), kxVariant::STRING) << script;
        EXPECT_EQ(answer, kxVariant(text)) << script;
    }
    Run("proc spy {args} {return a\\0b}");
    EXPECT_EQ(controller->GetAttributeValue(item, "cost"), kxVariant(kxString("a\0b", 3)));
    Run("proc spy {args} {string repeat x 5000000}");
    EXPECT_EQ(controller->GetAttributeValue(item, "cost").GetString().size(), 5000000U);
}

TEST_F(ControllerImplScripted, OddWaysToEndLeaveTheEmptyText) {
    for (const char* script : {"return -code break",
                               "return -code continue",
                               "return -code error x",
                               "return -code 7 x",
                               "throw {A B} x",
                               "no_such_command",
                               "expr {1 / 0}"}) {
        Run(kxString("proc spy {args} {") + script + "}");
        EXPECT_EQ(controller->GetAttributeValue(item, "cost"), kxVariant("")) << script;
        EXPECT_FALSE(controller->IsAttributeEditable(item, "cost")) << script;
    }
    Run("proc spy {one} {return wrong}");  // takes too few arguments
    EXPECT_EQ(controller->GetAttributeValue(item, "cost"), kxVariant(""));
}

TEST_F(ControllerImplScripted, OddAnswersToAYesOrNoQuestionAreNo) {
    for (const char* answer : {"", "0", "no", "maybe", "1 1", "kxptr:kxct::Item:0", "0.0"}) {
        Run(kxString("set answer {") + answer + "}");
        EXPECT_FALSE(controller->IsAttributeEditable(item, "cost")) << answer;
        EXPECT_FALSE(controller->NextAttributeValue(item, "cost")) << answer;
    }
    for (const char* answer : {"1", "-1", "0.5", "YES", "on", "True"}) {
        Run(kxString("set answer {") + answer + "}");
        EXPECT_TRUE(controller->IsAttributeEditable(item, "cost")) << answer;
    }
}

TEST_F(ControllerImplScripted, AProcedureMayLieInANamespaceAndHaveAnOddName) {
    Run("namespace eval ::cost {proc {of item; error} {verb item} {return ok}}");
    controller->RegisterScriptedAttribute("price", "::cost::of item; error");
    EXPECT_EQ(controller->GetAttributeValue(item, "price"), kxVariant("ok"));
    controller->RegisterScriptedAttribute("nothing", "");
    EXPECT_EQ(controller->GetAttributeValue(item, "nothing"), kxVariant(""));
}

TEST_F(ControllerImplScripted, AProcedureHearsItemUpdatedAndGetsTheItem) {
    Run("set heard {}; proc hear {args} {lappend ::heard $args}");
    SignalHandler& signals = *controller->GetSignalHandler(MANAGER_DEFAULT);
    signals.ItemUpdated.connect_script("hear");
    controller->SetAttributeValue(item, "cost", value);
    EXPECT_EQ(Variable("heard"), PointerText(item));
    EXPECT_TRUE(signals.ItemUpdated.disconnect_script("hear"));
    controller->SetAttributeValue(item, "cost", value);
    EXPECT_EQ(Variable("heard"), PointerText(item));
}

TEST_F(ControllerImplScripted, EverySignalCanBeConnectedToAScript) {
    Run("set heard {}; proc hear {args} {lappend ::heard $args}");
    SignalHandler& signals = *controller->GetSignalHandler(MANAGER_DEFAULT);
    signals.SessionClosed.connect_script("hear");
    signals.ItemDeleted.connect_script("hear");
    signals.ChildRemoved.connect_script("hear");
    signals.SelectionChanged.connect_script("hear");
    signals.SessionClosed.raise("s 1");
    signals.ItemDeleted.raise("A:1", item);
    signals.ChildRemoved.raise(item, nullptr);
    signals.SelectionChanged.raise("view", kxVariant(kxStlVector<kxString>{"A:1", "B:1"}));
    const std::string text = PointerText(item);
    EXPECT_EQ(Variable("heard"),
              "{{s 1}} {A:1 " + text + "} {" + text + " kxptr:kxct::Item:0} {view {A:1 B:1}}");
}

TEST_F(ControllerImplCalledBack, AScriptReadsAttributesOfTheRepository) {
    Run("proc spy {verb item} {expr {[controller get $item mass] * 2}}");
    EXPECT_EQ(controller->GetAttributeValue(item, "cost"), kxVariant("25.0"));
}

TEST_F(ControllerImplCalledBack, AScriptReadsAnotherScriptedAttribute) {
    controller->RegisterScriptedAttribute("price", "price");
    Run("proc price {verb item} {return \"[controller get $item cost] EUR\"}; set answer 12");
    EXPECT_EQ(controller->GetAttributeValue(item, "price"), kxVariant("12 EUR"));
    // The failure of the inner one doesn't reach the outer one.
    Run("proc spy {args} {error no}");
    EXPECT_EQ(controller->GetAttributeValue(item, "price"), kxVariant(" EUR"));
}

TEST_F(ControllerImplCalledBack, AScriptMaySetWhileItIsAsked) {
    controller->RegisterScriptedAttribute("price", "price");
    Run("proc price {args} {lappend ::calls $args; return 1}");
    Run("proc spy {verb item args} {controller set $item price 7}");
    ItemSpy updated(controller->GetSignalHandler(MANAGER_DEFAULT)->ItemUpdated);
    EXPECT_EQ(controller->GetAttributeValue(item, "cost"), kxVariant("true"));
    EXPECT_EQ(Variable("calls"), "{set " + PointerText(item) + " 7}");
    EXPECT_THAT(updated.items, ElementsAre(item));
    EXPECT_TRUE(controller->SetAttributeValue(item, "cost", value));
    EXPECT_EQ(updated.items.size(), 3U);
}

TEST_F(ControllerImplCalledBack, AListenerMaySetTheAttributeAgain) {
    Run("proc hear {item} {controller set $item cost again}; set answer 1");
    controller->GetSignalHandler(MANAGER_DEFAULT)->ItemUpdated.connect_script("hear");
    EXPECT_TRUE(controller->SetAttributeValue(item, "cost", value));
    EXPECT_EQ(Variable("calls"),
              "{set " + PointerText(item) + " {new value}} {set " + PointerText(item) + " again}");
}

TEST_F(ControllerImplCalledBack, AScriptThatAsksForItselfWithoutEndFailsAtTclsLimit) {
    Run("set depth 0; interp recursionlimit {} 200");
    Run("proc spy {verb item} {incr ::depth; controller get $item cost}");
    EXPECT_EQ(controller->GetAttributeValue(item, "cost"), kxVariant(""));
    EXPECT_GT(std::stoi(Variable("depth")), 10);
    Run("interp recursionlimit {} 1000; proc spy {args} {return again}");
    EXPECT_EQ(controller->GetAttributeValue(item, "cost"), kxVariant("again"));
}

TEST_F(ControllerImplCalledBack, AScriptMayUnregisterOtherAttributesAndRegisterNewOnes) {
    for (const char* name : {"a", "b", "costs", "z"}) {
        controller->RegisterScriptedAttribute(name, "spy");
    }
    Run("proc spy {verb item} {"
        "  foreach name {a b costs z cost} {controller unregister $name};"
        "  foreach name {k l m} {controller register $name other};"
        "  return done}");
    EXPECT_EQ(controller->GetAttributeValue(item, "cost"), kxVariant("done"));
    EXPECT_THAT(controller->GetScriptedAttributes(), ElementsAre("k", "l", "m"));
}

TEST_F(ControllerImplCalledBack, AfterAScriptUnregisteredItselfTheSignalStillComes) {
    Run("proc spy {verb item args} {controller unregister cost}");
    ItemSpy updated(controller->GetSignalHandler(MANAGER_DEFAULT)->ItemUpdated);
    EXPECT_TRUE(controller->SetAttributeValue(item, "cost", value));
    EXPECT_THAT(updated.items, ElementsAre(item));
    EXPECT_THAT(controller->GetScriptedAttributes(), IsEmpty());
}

TEST_F(ControllerImplScripted, AScriptMayDeleteTheCommandThatIsRunning) {
    Run("proc spy {verb args} {rename spy {}; return last}");
    EXPECT_EQ(controller->GetAttributeValue(item, "cost"), kxVariant("last"));
    EXPECT_EQ(controller->GetAttributeValue(item, "cost"), kxVariant(""));
    Run("proc spy {verb args} {proc spy {args} {return new}; return old}");
    EXPECT_EQ(controller->GetAttributeValue(item, "cost"), kxVariant("old"));
    EXPECT_EQ(controller->GetAttributeValue(item, "cost"), kxVariant("new"));
    Run("namespace eval ::gone {proc spy {args} {namespace delete ::gone; return ended}}");
    controller->RegisterScriptedAttribute("price", "::gone::spy");
    EXPECT_EQ(controller->GetAttributeValue(item, "price"), kxVariant("ended"));
    EXPECT_EQ(controller->GetAttributeValue(item, "price"), kxVariant(""));
}

TEST_F(ControllerImplCalledBack, AScriptMayDeleteTheCommandByWhichItCallsBack) {
    Run("proc spy {verb item} {rename controller {}; return [catch {controller clear}]}");
    EXPECT_EQ(controller->GetAttributeValue(item, "cost"), kxVariant("1"));
}

TEST_F(ControllerImplCalledBack, APointerOfADeletedItemIsAnErrorForScripts) {
    Run("proc spy {verb item} {set ::kept $item; return 1}");
    controller->GetAttributeValue(item, "cost");
    Run("controller get $kept mass");
    controller->ClearCache(MANAGER_DEFAULT);
    Run("set failed [catch {controller get $kept mass} message]");
    EXPECT_EQ(Variable("failed"), "1");
    EXPECT_EQ(Variable("message"), "no such item");
}

TEST_F(ControllerImplCalledBack, AScriptMayDeleteTheItemThatItIsAskedAbout) {
    Run("proc spy {verb item args} {controller clear; return 1}");
    EXPECT_EQ(controller->GetAttributeValue(item, "cost"), kxVariant("1"));
    // A signal has no item to carry then.
    ItemSpy updated(controller->GetSignalHandler(MANAGER_DEFAULT)->ItemUpdated);
    item = ItemOf("A:1");
    EXPECT_TRUE(controller->SetAttributeValue(item, "cost", value));
    item = ItemOf("A:1");
    EXPECT_TRUE(controller->NextAttributeValue(item, "cost"));
    EXPECT_THAT(updated.items, IsEmpty());
    EXPECT_TRUE(controller->SetAttributeValue("A:1", "cost", value));
}

}  // namespace
}  // namespace kxct::test
