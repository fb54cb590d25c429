// Prints a port of this computer that nothing listens on.
import { createServer } from 'node:net';

const server = createServer();
server.listen(0, '127.0.0.1', () => {
    console.log(server.address().port);
    server.close();
});
