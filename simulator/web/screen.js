// SPDX-License-Identifier: Apache-2.0
/** The live screen. @module */

/** Draws the television's screen whenever it has changed, and the light that it throws on the wall behind it. */
export class LiveScreen {
  #canvas;
  #glow;
  #load;
  #busy = false;
  #stale = false;

  /**
   * @param {HTMLCanvasElement} canvas takes the size of the screen
   * @param {HTMLCanvasElement} glow a few pixels for the light
   * @param {() => Promise<Blob>} load fetches the screen as an image
   */
  constructor(canvas, glow, load) {
    this.#canvas = canvas;
    this.#glow = glow;
    this.#load = load;
    document.addEventListener('visibilitychange', () => this.#stale && this.refresh());
  }

  /** Draws the screen anew; changes that come while one is fetched cost one more fetch, not one each. */
  async refresh() {
    this.#stale = true;
    if (this.#busy || document.hidden) {
      return;
    }
    this.#busy = true;
    try {
      while (this.#stale && !document.hidden) {
        this.#stale = false;
        this.#draw(await createImageBitmap(await this.#load()));
      }
    } catch {
      this.#stale = false;  // the connection tells what is wrong; what stands stays
    } finally {
      this.#busy = false;
    }
  }

  #draw(image) {
    const canvas = this.#canvas;
    if (canvas.width !== image.width || canvas.height !== image.height) {
      canvas.width = image.width;
      canvas.height = image.height;
    }
    canvas.getContext('2d').drawImage(image, 0, 0);
    this.#glow.getContext('2d').drawImage(image, 0, 0, this.#glow.width, this.#glow.height);
    image.close();
  }
}
