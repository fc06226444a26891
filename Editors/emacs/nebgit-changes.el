;;; nebgit-changes.el --- Marks beside changed lines  -*- lexical-binding: t; -*-

;; SPDX-License-Identifier: MIT

;;; Commentary:

;; Compares the text of a buffer, also if it is not saved, with the file in the index, and marks the
;; lines that differ in the fringe or, on a terminal, in the margin.  The server reads the content
;; of the index; diff(1) compares, as a process of its own, when Emacs is idle.

;;; Code:

(require 'nebgit-act)
(require 'nebgit-watch)

(defcustom nebgit-changes-delay 0.1
  "Seconds without input after which the text is compared."
  :type 'number
  :group 'nebgit)

(defcustom nebgit-changes-limit 5000
  "How many lines of a buffer are marked."
  :type 'natnum
  :group 'nebgit)

(defface nebgit-added '((t :inherit diff-added))
  "Face of the marks beside added lines."
  :group 'nebgit)

(defface nebgit-modified '((t :inherit diff-changed))
  "Face of the marks beside modified lines."
  :group 'nebgit)

(defface nebgit-deleted '((t :inherit diff-removed))
  "Face of the marks where lines were deleted."
  :group 'nebgit)

(cl-defstruct nebgit-hunk
  "Lines of the index that were replaced: OLD-COUNT after OLD-LINE, numbers from 0.
They are NEW-COUNT lines after NEW-LINE of the buffer."
  old-line old-count new-line new-count)

(defvar-local nebgit-changes--base nil
  "Name of a temporary file with the text of the index; nil without one.")

(defvar-local nebgit-changes--hunks nil
  "The hunks, a list of `nebgit-hunk', as of the last comparison.")

(defvar-local nebgit-changes--tick nil
  "Modification tick of the text of the last comparison.")

(defvar-local nebgit-changes--reading nil
  "What identifies the latest request for the file in the index.")

(defvar-local nebgit-changes--process nil
  "Process that compares.")

(defvar-local nebgit-changes--timer nil
  "Timer of the next comparison.")

(when (fboundp 'define-fringe-bitmap)
  (define-fringe-bitmap 'nebgit-bar [#xe0] nil nil '(center t))
  (define-fringe-bitmap 'nebgit-line [#xff #xff #xff] nil nil 'top))

;;; Text of the index

(defun nebgit-changes--path ()
  "Return a cons of the working copy and the path of this buffer's file; or nil."
  (let ((root (and buffer-file-name (nebgit-root (file-name-directory buffer-file-name)))))
    (and root (cons root (file-relative-name buffer-file-name root)))))

(defun nebgit-changes--content (success failure &rest members)
  "Read the file of this buffer in the index; pass its bytes to SUCCESS.
FAILURE is as of `nebgit-perform'.  MEMBERS are added to the request."
  (pcase-let ((`(,root . ,path) (nebgit-changes--path)))
    (nebgit-perform
     (apply #'nebgit-request 'content root :files (list path) :Stage 0 members)
     :success (lambda (records _)
                (let ((record (car records)))
                  (funcall success
                           (encode-coding-string (or (nebgit-name record Content) "")
                                                 'utf-8-unix))))
     :failure failure)))

(defun nebgit-changes-refresh (&optional buffer)
  "Read the text of the index again for BUFFER, by default the current one."
  (interactive)
  (let ((buffer (or buffer (current-buffer))))
    (when (buffer-live-p buffer)
      (with-current-buffer buffer
        (when (nebgit-changes--path)
          (let ((token (setq nebgit-changes--reading (list nil))))
            (cl-flet ((set-base (bytes)
                        (when (and (buffer-live-p buffer)
                                   (eq token (buffer-local-value 'nebgit-changes--reading buffer)))
                          (nebgit-changes--set-base buffer bytes))))
              (nebgit-changes--content #'set-base (lambda (&rest _) (set-base nil))
                                       :ApplyFilters t :background t))))))))

(defun nebgit-changes--set-base (buffer bytes)
  "Compare BUFFER with BYTES, its file in the index, from now on.
BYTES is nil if the index does not have the file."
  (when (and (buffer-live-p buffer) (buffer-local-value 'nebgit-changes-mode buffer))
    (with-current-buffer buffer
      (if (not bytes)
          (progn (nebgit-changes--forget)
                 (nebgit-changes--draw nil))
        (unless nebgit-changes--base
          (setq nebgit-changes--base (make-temp-file "nebgit-base")))
        (let ((coding-system-for-write 'utf-8-emacs-unix)
              (write-region-annotate-functions nil)
              (text (decode-coding-string
                     bytes (coding-system-change-eol-conversion
                            (or buffer-file-coding-system 'utf-8)
                            (if (string-match-p "\r\n" bytes) 'dos 'unix)))))
          (write-region text nil nebgit-changes--base nil 'silent))
        (nebgit-changes--compare buffer)))))

(defun nebgit-changes--forget ()
  "Delete the temporary file, and end the comparison."
  (when (process-live-p nebgit-changes--process)
    (delete-process nebgit-changes--process))
  (when nebgit-changes--base
    (ignore-errors (delete-file nebgit-changes--base)))
  (setq nebgit-changes--base nil
        nebgit-changes--process nil))

(defun nebgit-changes--forget-all ()
  "Delete all temporary files, as Emacs exits."
  (dolist (buffer (buffer-list))
    (when (buffer-local-value 'nebgit-changes--base buffer)
      (with-current-buffer buffer (nebgit-changes--forget)))))

;;; Comparison

(defun nebgit-changes--schedule (&rest _)
  "Compare the text when Emacs is idle."
  (unless nebgit-changes--timer
    (setq nebgit-changes--timer
          (run-with-idle-timer nebgit-changes-delay nil
                               #'nebgit-changes--compare (current-buffer)))))

(defun nebgit-changes--compare (buffer)
  "Start to compare the text of BUFFER with the index."
  (when (buffer-live-p buffer)
    (with-current-buffer buffer
      (setq nebgit-changes--timer nil)
      (when nebgit-changes--base
        (when (process-live-p nebgit-changes--process)
          (delete-process nebgit-changes--process))
        (let ((file (make-temp-file "nebgit-text"))
              (coding-system-for-write 'utf-8-emacs-unix)
              (write-region-annotate-functions nil))
          (save-restriction
            (widen)
            (write-region (point-min) (point-max) file nil 'silent))
          (setq nebgit-changes--process
                (nebgit-changes--diff buffer nebgit-changes--base file
                                      (buffer-chars-modified-tick))))))))

(defun nebgit-changes--diff (buffer base file tick)
  "Run diff(1) on the files BASE and FILE; mark the lines of BUFFER.
TICK is the modification tick of its text.  FILE is deleted."
  (let ((output (generate-new-buffer " *nebgit diff*")))
    (make-process
     :name "nebgit-diff" :buffer output :noquery t :connection-type 'pipe :coding 'utf-8-unix
     :command (list (or (bound-and-true-p diff-command) "diff") "--text" "-U0" base file)
     :sentinel (lambda (process _)
                 (unless (process-live-p process)
                   (ignore-errors (delete-file file))
                   ;; Of two that ended at the same time, Emacs may report the older one last.
                   (when (and (buffer-live-p buffer)
                              (eq process (buffer-local-value 'nebgit-changes--process buffer))
                              (memql (process-exit-status process) '(0 1))
                              (eq (process-status process) 'exit))
                     (nebgit-changes--compared buffer tick
                                               (with-current-buffer output
                                                 (nebgit-changes--parse))))
                   (kill-buffer output))))))

(defun nebgit-changes--parse ()
  "Return the hunks of the diff without context in the current buffer."
  (let (hunks)
    (goto-char (point-min))
    (while (re-search-forward
            (concat "^@@ -\\([0-9]+\\)\\(?:,\\([0-9]+\\)\\)?"
                    " \\+\\([0-9]+\\)\\(?:,\\([0-9]+\\)\\)? @@")
            nil t)
      (cl-flet ((number (group) (string-to-number (or (match-string group) "1"))))
        (let ((old (number 2)) (new (number 4)))
          (push (make-nebgit-hunk :old-line (- (number 1) (if (zerop old) 0 1)) :old-count old
                                  :new-line (- (number 3) (if (zerop new) 0 1)) :new-count new)
                hunks))))
    (nreverse hunks)))

(defun nebgit-changes--compared (buffer tick hunks)
  "Mark HUNKS in BUFFER unless its text changed since TICK."
  (with-current-buffer buffer
    (if (eql tick (buffer-chars-modified-tick))
        (progn (setq nebgit-changes--tick tick)
               (nebgit-changes--draw hunks))
      (nebgit-changes--schedule))))

;;; Marks

(defun nebgit-changes--draw (hunks)
  "Mark HUNKS in the current buffer, and nothing else."
  (setq nebgit-changes--hunks hunks)
  (save-restriction
    (widen)
    (remove-overlays (point-min) (point-max) 'nebgit-changes t)
    (save-excursion
      (goto-char (point-min))
      (let ((line 0) (left nebgit-changes-limit))
        (dolist (hunk hunks)
          (forward-line (- (nebgit-hunk-new-line hunk) line))
          (setq line (nebgit-hunk-new-line hunk))
          (if (zerop (nebgit-hunk-new-count hunk))
              (nebgit-changes--mark 'nebgit-deleted 'nebgit-line "_" hunk)
            (dotimes (_ (min left (nebgit-hunk-new-count hunk)))
              (if (zerop (nebgit-hunk-old-count hunk))
                  (nebgit-changes--mark 'nebgit-added 'nebgit-bar "+" hunk)
                (nebgit-changes--mark 'nebgit-modified 'nebgit-bar "~" hunk))
              (cl-decf left)
              (forward-line 1)
              (cl-incf line)))))))
  (force-mode-line-update))

(defun nebgit-changes--mark (face bitmap text hunk)
  "Mark the line of point with FACE and BITMAP, on a terminal with TEXT, for HUNK."
  (let ((overlay (make-overlay (point) (point)))
        (display (if (and (display-graphic-p) (not (equal left-fringe-width 0)))
                     (list 'left-fringe bitmap face)
                   (list '(margin left-margin) (propertize text 'face face)))))
    (overlay-put overlay 'nebgit-changes t)
    (overlay-put overlay 'nebgit-hunk hunk)
    (overlay-put overlay 'nebgit-face face)
    (overlay-put overlay 'before-string (propertize " " 'display display))))

(defun nebgit-changes-counts ()
  "Return the numbers of lines that were added, modified and deleted, a list."
  (let ((added 0) (modified 0) (deleted 0))
    (dolist (hunk nebgit-changes--hunks)
      (let* ((old (nebgit-hunk-old-count hunk))
             (new (nebgit-hunk-new-count hunk))
             (both (min old new)))
        (cl-incf modified both)
        (cl-incf added (- new both))
        (cl-incf deleted (- old both))))
    (list added modified deleted)))

;;; Mode

(defvar nebgit-changes-mode-map
  (let ((map (make-sparse-keymap)))
    (cl-loop for (keys command) in
             '(("n" nebgit-hunk-next) ("p" nebgit-hunk-previous) ("=" nebgit-hunk-show)
               ("s" nebgit-hunk-stage) ("k" nebgit-hunk-revert) ("b" nebgit-blame)
               ("l" nebgit-log-file) ("g" nebgit-status))
             do (define-key map (kbd (concat "C-c . " keys)) command))
    map)
  "Keys of buffers with marks beside changed lines.")

(declare-function nebgit-mode-line "nebgit-mode-line")
(declare-function nebgit-hunk-next "nebgit-hunk")
(declare-function nebgit-hunk-previous "nebgit-hunk")
(declare-function nebgit-hunk-show "nebgit-hunk")
(declare-function nebgit-hunk-stage "nebgit-hunk")
(declare-function nebgit-hunk-revert "nebgit-hunk")

;;;###autoload (autoload 'nebgit-changes-mode "nebgit" nil t)
(define-minor-mode nebgit-changes-mode
  "Mark the lines that differ from the index, also of text that is not saved.
\\{nebgit-changes-mode-map}"
  :lighter (:eval (nebgit-mode-line))
  (if (and nebgit-changes-mode (nebgit-changes--path))
      (nebgit-changes--enable)
    (setq nebgit-changes-mode nil)
    (nebgit-changes--disable)))

(defun nebgit-changes--enable ()
  "Start to mark lines in the current buffer."
  (add-hook 'after-change-functions #'nebgit-changes--schedule nil t)
  (add-hook 'after-revert-hook #'nebgit-changes-refresh nil t)
  (add-hook 'kill-buffer-hook #'nebgit-changes--forget nil t)
  (add-hook 'change-major-mode-hook #'nebgit-changes--disable nil t)
  (unless (display-graphic-p)
    (setq left-margin-width (max 1 (or left-margin-width 0)))
    (dolist (window (get-buffer-window-list nil nil t))
      (set-window-buffer window (current-buffer))))
  (nebgit-watch-buffer (car (nebgit-changes--path)))
  (nebgit-changes-refresh))

(defun nebgit-changes--disable ()
  "Do not mark lines in the current buffer any more."
  (remove-hook 'after-change-functions #'nebgit-changes--schedule t)
  (remove-hook 'after-revert-hook #'nebgit-changes-refresh t)
  (remove-hook 'kill-buffer-hook #'nebgit-changes--forget t)
  (remove-hook 'change-major-mode-hook #'nebgit-changes--disable t)
  (when nebgit-changes--timer
    (cancel-timer nebgit-changes--timer)
    (setq nebgit-changes--timer nil))
  (nebgit-changes--forget)
  (nebgit-changes--draw nil))

;;;###autoload (autoload 'global-nebgit-changes-mode "nebgit" nil t)
(define-globalized-minor-mode global-nebgit-changes-mode nebgit-changes-mode
  nebgit-changes--turn-on
  :group 'nebgit)

(defun nebgit-changes--turn-on ()
  "Turn on `nebgit-changes-mode' in a buffer with a file of a working copy."
  (when (nebgit-changes--path)
    (nebgit-changes-mode 1)))

(defun nebgit-changes--changed (root &optional what)
  "Compare the buffers of ROOT with the index again, if WHAT has it."
  (when (or (not what) (seq-intersection what '("index" "head" "configuration")))
    (dolist (buffer (buffer-list))
      (when (and (buffer-local-value 'nebgit-changes-mode buffer)
                 (string-prefix-p root (buffer-file-name buffer)))
        (nebgit-changes-refresh buffer)))))

(add-hook 'nebgit-changed-hook #'nebgit-changes--changed)
(add-hook 'kill-emacs-hook #'nebgit-changes--forget-all)

(provide 'nebgit-changes)
;;; nebgit-changes.el ends here
