#include "federation/CentroNotificaciones.h"
