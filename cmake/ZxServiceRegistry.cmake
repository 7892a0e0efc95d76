# SPDX-License-Identifier: Apache-2.0
# The registry through which the HTTP client is found: CppMicroServices, or the small one of foundation/.
# Sets ZX_CPPMICROSERVICES_FOUND and ZX_SERVICE_REGISTRY, what to link for it.
set(ZX_CPPMICROSERVICES AUTO CACHE STRING "Use the service registry of CppMicroServices: AUTO, ON or OFF")
set_property(CACHE ZX_CPPMICROSERVICES PROPERTY STRINGS AUTO ON OFF)

set(ZX_CPPMICROSERVICES_FOUND OFF)
set(ZX_SERVICE_REGISTRY "")
if(NOT ZX_CPPMICROSERVICES STREQUAL "OFF")
  find_package(CppMicroServices 3.8 QUIET COMPONENTS Framework)
  if(CppMicroServices_FOUND)
    set(ZX_CPPMICROSERVICES_FOUND ON)
    add_library(zx_service_registry INTERFACE)
    target_compile_definitions(zx_service_registry INTERFACE ZX_WITH_CPPMICROSERVICES)
    target_link_libraries(zx_service_registry INTERFACE CppMicroServices)
    set(ZX_SERVICE_REGISTRY zx_service_registry)
  elseif(ZX_CPPMICROSERVICES STREQUAL "ON")
    message(FATAL_ERROR "ZX_CPPMICROSERVICES is ON, but CppMicroServices 3.8 was not found")
  endif()
endif()
