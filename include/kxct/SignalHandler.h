// What an application can listen to: the changes of one tree of items.
//
// The model. Each controller has one handler per tree. Its item manager raises most of the signals
// when the repository reports a change; views and the controller raise the others. Listeners derive
// from kxListener<single_threaded> and are disconnected when they go. A signal that nobody ever
// connected to costs one test.
//
// A listener gets items, not copies: they belong to their manager. An item that ItemDeleted told of
// is out of the cache but stays readable.
//
// Ownership: the controller owns its handlers; they hold no items. Threads: no lock is taken; a
// signal is raised on the thread that the change is reported on. While a signal is being raised,
// raising it again does nothing; connections may be added and removed.
//
//     struct View : kxListener<single_threaded> {
//         void Changed(kxct::Item* item);
//     } view;
//     controller->GetSignalHandler(kxct::MANAGER_DEFAULT)->ItemUpdated.connect(&view,
//     &View::Changed);
#pragma once

#include <kxct/kxct_export.h>
#include <kxsigslot/kxSignal.h>
#include <kxutl/kxString.h>
#include <kxutl/kxVariant.h>

namespace kxct {

class Item;

// The order of the signals is part of the binary interface.
class KXCT_EXPORT SignalHandler {
  public:
    // View name: the view was set up.
    kxiSignal1<const kxString&> ViewInitialized;
    // An attribute, the state or the revision of the item changed.
    kxiSignal1<Item*> ItemUpdated;
    // What hangs below the item changed.
    kxiSignal1<Item*> ItemStructureUpdated;
    // Session id. Raised before the items go.
    kxiSignal1<const kxString&> SessionClosed;
    // For hosts; nothing here raises it.
    kxiSignal2<const kxString&, Item*> ItemMetadataUpdated;
    kxiSignal2<const kxString&, Item*> Signal5Reserved;
    // UID and item that is gone from the repository.
    kxiSignal2<const kxString&, Item*> ItemDeleted;
    kxiSignal2<const kxString&, Item*> Signal7Reserved;
    kxiSignal2<const kxString&, Item*> Signal8Reserved;
    // Parent and child. For hosts; nothing here raises it.
    kxiSignal2<Item*, Item*> ChildAdded;
    // Parent and child that it lost.
    kxiSignal2<Item*, Item*> ChildRemoved;
    // View name and list of UIDs.
    kxiSignal2<const kxString&, const kxVariant&> SelectionChanged;
    // Parent, which is null where only the item is known, and item.
    kxiSignal2<Item*, Item*> ItemCreated;
};

}  // namespace kxct
