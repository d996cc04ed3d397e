// Identifiers of the program's resources, shared by the resource script and the code.
#pragma once

#define IDI_VIEWER 1
