#pragma once

#include "ipc/ipc_shm.h"

// What the programs of the family create. It adds nothing to the transport.
class Ipc : public IpcShm {
    Q_OBJECT

public:
    using IpcShm::IpcShm;
};
