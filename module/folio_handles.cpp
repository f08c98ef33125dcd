#include "host/exchange_host.h"
#include "module/folio_registration.h"
#include "objects/handle_release.h"
#include "objects/pyhold_api.h"

static void free_gc_handle(void* handle) {
    if (handle != nullptr)
        ExchangeHost::get_instance().free_instance(handle);
}

void install_handle_releasers() {
    g_free_gc_handle = &free_gc_handle;
    pyhold_install_releaser(&free_gc_handle);
}
