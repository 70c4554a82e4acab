/* slow_share DIRECTORY MOUNT_POINT: shows a directory read-only through a link on which every request takes a round trip
   (RTT, in seconds) and its bytes their time (BANDWIDTH, in bytes a second), both from the environment.
   Needs libfuse 3: cc slow_share.c $(pkg-config --cflags --libs fuse3) */
#define FUSE_USE_VERSION 31
#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <fuse.h>
#include <limits.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

static char root[PATH_MAX];
static double round_trip;
static double bandwidth;

static void take_time(double bytes) {
    const double seconds = round_trip + bytes / bandwidth;
    const struct timespec time = {(time_t)seconds, (long)((seconds - (double)(time_t)seconds) * 1e9)};
    nanosleep(&time, NULL);
}

static const char *behind(char *buffer, size_t size, const char *path) {
    snprintf(buffer, size, "%s%s", root, path);
    return buffer;
}

static int share_getattr(const char *path, struct stat *status, struct fuse_file_info *info) {
    char name[2 * PATH_MAX];
    (void)info;
    take_time(0);
    return lstat(behind(name, sizeof name, path), status) == 0 ? 0 : -errno;
}

static int share_open(const char *path, struct fuse_file_info *info) {
    char name[2 * PATH_MAX];
    take_time(0);
    const int fd = open(behind(name, sizeof name, path), O_RDONLY);
    if (fd < 0) return -errno;
    info->fh = (uint64_t)fd;
    return 0;
}

static int share_read(const char *path, char *data, size_t size, off_t offset, struct fuse_file_info *info) {
    (void)path;
    const ssize_t count = pread((int)info->fh, data, size, offset);
    if (count < 0) return -errno;
    take_time((double)count);
    return (int)count;
}

static int share_release(const char *path, struct fuse_file_info *info) {
    (void)path;
    close((int)info->fh);
    return 0;
}

static int share_readdir(const char *path, void *list, fuse_fill_dir_t fill, off_t offset, struct fuse_file_info *info,
                         enum fuse_readdir_flags flags) {
    char name[2 * PATH_MAX];
    (void)offset, (void)info, (void)flags;
    take_time(0);
    DIR *directory = opendir(behind(name, sizeof name, path));
    if (!directory) return -errno;
    for (const struct dirent *entry; (entry = readdir(directory));) fill(list, entry->d_name, NULL, 0, 0);
    closedir(directory);
    return 0;
}

static const struct fuse_operations operations = {
    .getattr = share_getattr,
    .open = share_open,
    .read = share_read,
    .release = share_release,
    .readdir = share_readdir,
};

int main(int argc, char **argv) {
    const char *rtt = getenv("RTT");
    const char *bytes_a_second = getenv("BANDWIDTH");
    if (argc != 3 || !realpath(argv[1], root)) {
        fprintf(stderr, "usage: slow_share DIRECTORY MOUNT_POINT\n");
        return 2;
    }
    round_trip = atof(rtt ? rtt : "0.001");
    bandwidth = atof(bytes_a_second ? bytes_a_second : "1e9");
    char *arguments[] = {argv[0], argv[2], "-f", "-o", "ro", NULL};
    return fuse_main(5, arguments, &operations, NULL);
}
