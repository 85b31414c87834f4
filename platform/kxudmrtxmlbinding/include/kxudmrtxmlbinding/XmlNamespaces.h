// The XML namespaces of the settings documents, as the gSOAP runtime wants them.
//
// Lowest layer: this library brings the gSOAP runtime into the process together with the hooks that
// the runtime expects its user to define. The runtime's own header is not needed to include this
// one.
//
//     soap_set_namespaces(context, kxGetXmlNamespaces());
#pragma once

#include <kxudmrtxmlbinding/kxudmrtxmlbinding_export.h>

struct Namespace;

/// The five rows SOAP-ENV, SOAP-ENC, xsi, xsd and kxct in this order, ended by a row of null
/// pointers. The table is constant and lives as long as the library; any thread may read it.
///
/// To be preferred to the runtime's global `namespaces`: a host that embeds gSOAP too defines that
/// name itself, and the dynamic linker then answers the host's rows.
KXUDMRTXMLBINDING_EXPORT const Namespace* kxGetXmlNamespaces();
