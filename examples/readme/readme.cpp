// readme SETTINGS FOLDER: keeps one simulation in a library below FOLDER and reads it back.
#include <kxct/EntryPoints.h>
#include <kxctinterfaces/Controller.h>
#include <kxctinterfaces/Factory.h>

#include <iostream>

int main(int argc, char** argv) {
    if (argc != 3) {
        return 2;
    }
    const kxString defaults = argv[1];
    const kxString folder = argv[2];

    kxct::Factory* factory = CreateFactory();
    kxct::MasterDBManager* manager =
        factory->CreateMasterDBManager(defaults, folder + "/settings.xml");
    kxct::Controller* controller = factory->CreateController(manager,
                                                             "local",   // profile
                                                             "Bridge",  // library
                                                             folder + "/libraries",
                                                             "design",  // workspace
                                                             folder + "/design",
                                                             "anna",  // user
                                                             "",      // password, host, port
                                                             "",
                                                             "");
    if (!controller->IsDBValid()) {
        std::cerr << "the library can't be opened\n";
        return 1;
    }

    kxct::Item* decks = controller->GetOrCreateFolder("/Decks/Main span", true);
    kxct::Item* simulation = controller->CreateContent("UDMSimulation", "self weight");
    kxVariant text("self weight and snow");
    simulation->SetAttributeValue("description", text);
    controller->MoveContent(simulation, decks);

    kxct::Item* found = controller->GetItem(simulation->GetUID(), false);
    std::cout << controller->GetFolderFullPath(decks) << "/" << found->GetDisplayName() << ": "
              << found->GetAttributeValue("description").GetString() << "\n";

    factory->DeleteController(controller);
    factory->DeleteMasterDBManager(manager);
    return 0;
}
