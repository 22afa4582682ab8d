// Does the least work that a run can do: sends one GET request to a Unix socket and writes the
// reply's body and a line break to standard output. It checks only the conditions that a run with a
// good reply needs.
//
// If TEXT is given, it writes the content of that file instead of the body. This is the floor for a
// run that makes the same text from the reply. The text must be the same because a terminal takes
// longer for text with more line breaks.
//
//   floor SOCKET PATH [TEXT]
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

enum { readSize = 262144, firstCapacity = 524288 };

int main(int argc, char** argv) {
    struct sockaddr_un address = {.sun_family = AF_UNIX};
    char request[512];
    if (argc < 3 || strlen(argv[1]) >= sizeof address.sun_path) {
        return 2;
    }
    strcpy(address.sun_path, argv[1]);
    const int length = snprintf(request, sizeof request,
                                "GET %s HTTP/1.1\r\nHost: localhost\r\n"
                                "Content-Type: application/json; charset=utf-8\r\n"
                                "Content-Length: 0\r\nConnection: close\r\n\r\n",
                                argv[2]);
    const int server = socket(AF_UNIX, SOCK_STREAM, 0);
    if (connect(server, (const struct sockaddr*)&address, sizeof address) != 0 ||
        send(server, request, (size_t)length, 0) != length) {
        return 3;
    }
    size_t size = 0;
    size_t capacity = firstCapacity;
    char* reply = malloc(capacity);
    ssize_t count = 0;
    while (reply != NULL && (count = read(server, reply + size, readSize)) > 0) {
        size += (size_t)count;
        if (capacity - size < readSize) {
            capacity *= 2;
            reply = realloc(reply, capacity);
        }
    }
    if (reply == NULL || count < 0) {
        return 3;
    }
    // The buffer always has room for a whole read behind the reply, so also for these two bytes.
    reply[size] = '\0';
    char* body = strstr(reply, "\r\n\r\n");
    if (body == NULL) {
        return 3;
    }
    body += 4;
    size_t left = (size_t)(reply + size - body);
    body[left++] = '\n';
    if (argc > 3) {
        const int file = open(argv[3], O_RDONLY);
        struct stat status;
        if (file < 0 || fstat(file, &status) != 0) {
            return 2;
        }
        left = (size_t)status.st_size;
        body = mmap(NULL, left, PROT_READ, MAP_PRIVATE, file, 0);
        if (body == MAP_FAILED) {
            return 2;
        }
    }
    for (; left > 0; body += count, left -= (size_t)count) {
        count = write(STDOUT_FILENO, body, left);
        if (count <= 0) {
            return 1;
        }
    }
    return 0;
}
