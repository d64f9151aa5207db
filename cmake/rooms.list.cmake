# The rooms of the house, from the ground up. Who may use whom stands here and nowhere else.
fenlight_room(platform_system   platform/system   LIBS dl)
fenlight_room(platform_graphics platform/graphics USES platform_system)
fenlight_room(platform_window   platform/window   USES platform_graphics platform_system LIBS PkgConfig::SDL2)
fenlight_room(platform_pictures platform/pictures USES platform_graphics platform_system LIBS PkgConfig::GDK_PIXBUF)
fenlight_room(frame   frame   USES platform_window platform_system LIBS lodepng JPEG::JPEG)
fenlight_room(images  images  USES frame platform_pictures platform_window platform_graphics LIBS ZLIB::ZLIB)
fenlight_room(sprites sprites USES frame platform_window platform_graphics platform_system)

fenlight_room(test_support_objects ../tests/support USES platform_system)
