#pragma once

// The names of the foundation room, for headers that need no more than a reference.
namespace platform {

class Bundle;
class BundleFiles;
class Bundles;
class NSObject;
class NotificationCenter;
class NotificationName;
class ObservationToken;
class URL;
class UUID;
class Value;
struct Callable;
struct Data;
struct Locale;
struct NSError;
struct Notification;
struct Point;
struct Rect;
struct Size;

} // namespace platform
