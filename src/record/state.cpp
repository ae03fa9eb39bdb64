#include "record/state.h"

FoundationState gORB_FoundationStruct;
ORB_ServiceRecord gORB_FoundationAnswer;
char gORB_bsdPath[256];
termios gORB_Termios;
termios gOriginalTTYAttrs;
