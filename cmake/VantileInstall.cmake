# What a host's build finds: the two libraries, the public headers, find_package(Vantile) and
# pkg-config files.

include(CMakePackageConfigHelpers)

install(
  TARGETS vantile vantile-utility
  EXPORT VantileTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})

set(public_headers
    disk/disk.h
    disk/disk_keys.h
    foundation/api.h
    foundation/delegate_slot.h
    foundation/guard.h
    foundation/log.h
    foundation/loop_driver.h
    foundation/monitor.h
    foundation/notification_center.h
    foundation/queue.h
    foundation/run_loop.h
    foundation/sample_lock.h
    foundation/timer_schedule.h
    foundation/value.h
    foundation/worker_queue.h
    memory/cleaner.h
    memory/memory.h
    memory/memory_keys.h
    network/net_manage.h
    network/net_ppp.h
    network/network.h
    network/network_keys.h
    platform/smc_record.h
    platform/text_patterns.h
    power/battery_info.h
    process/process_info.h
    process/process_stats.h
    sensors/cpu.h
    sensors/smc.h
    sysinfo/system_info.h
    utility/folder_functions.h
    utility/general_utility.h
    utility/paths.h
    utility/strings.h
    watchers/folder_watcher.h
    watchers/path_list.h
    watchers/watch_application.h
    watchers/watch_download.h
    watchers/watch_trash.h
    watchqueue/path_entry.h
    watchqueue/watch_queue.h)
foreach(header IN LISTS public_headers)
  get_filename_component(folder ${header} DIRECTORY)
  install(FILES ${PROJECT_SOURCE_DIR}/vantile/${header}
          DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/vantile/${folder})
endforeach()

set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/Vantile)
install(EXPORT VantileTargets NAMESPACE Vantile:: DESTINATION ${package_folder})
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/VantileConfig.cmake.in
                              VantileConfig.cmake INSTALL_DESTINATION ${package_folder})
write_basic_package_version_file(VantileConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/VantileConfig.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/VantileConfigVersion.cmake
        DESTINATION ${package_folder})

# Relative, so that an installed tree can be moved.
file(RELATIVE_PATH prefix_from_pkgconfig /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
foreach(library vantile vantile-utility)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/${library}.pc.in ${library}.pc @ONLY)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${library}.pc
          DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endforeach()
