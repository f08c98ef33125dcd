// Starting the runtime host from module initialisation.
#pragma once

// 0 when the runtime runs and the exchange and object hosts are bound with every callback
// handed over; -1 with a TypeError set. Failures of the runtime's own start are thrown.
int initialize_clr_host(const char* runtime_dir, const char* assembly, bool debug, const char* company,
                        const char* product);
