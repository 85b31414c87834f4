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

}  // namespace
}  // namespace kxct::test
