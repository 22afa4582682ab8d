#pragma once

/// The part of sysdir(3) that platform.cpp uses. The toolchain has no such header.

#ifdef __cplusplus
extern "C" {
#endif

typedef enum { SYSDIR_DIRECTORY_APPLICATION_SUPPORT = 14 } sysdir_search_path_directory_t;
typedef enum { SYSDIR_DOMAIN_MASK_USER = 1 } sysdir_search_path_domain_mask_t;
typedef unsigned int sysdir_search_path_enumeration_state;

sysdir_search_path_enumeration_state
sysdir_start_search_path_enumeration(sysdir_search_path_directory_t directory,
                                     sysdir_search_path_domain_mask_t domains);
/// Writes the next folder to `path`, which has room for PATH_MAX bytes. Returns 0 if there is none.
sysdir_search_path_enumeration_state
sysdir_get_next_search_path_enumeration(sysdir_search_path_enumeration_state state, char* path);

#ifdef __cplusplus
}
#endif
