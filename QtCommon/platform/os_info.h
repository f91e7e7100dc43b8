#pragma once

// What a program of the family keeps about the system it runs on and hands to the parts that it is made of. This
// program keeps nothing there.
struct OsInfo { };
